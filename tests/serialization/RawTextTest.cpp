// SPDX-License-Identifier: MIT
#include "serialization/RawText.h"

#include "ReaderFixture.h"
#include "serialization/ModelInFormatAccess.h"

#include <gtest/gtest.h>

namespace Zorvan::AttributeContainer {
namespace {

TEST(RawText, TextIsTranslatedByItsMeaning) {
    using Row = std::tuple<char const*, char const*, char const*>; // null: the text comes back
    for (auto const& [text, expected, back] :
         {Row{"", "", nullptr},
          Row{"\n  A  1 \r\n\r\n B{ C\n} ", "<A value=\" 1 \" />\n<B>\n<C value=\"\" />\n</B>\n",
              "A  1 \nB { \nC \n}\n"},
          Row{"A { 1 } B 2\n", "<A value=\"{ 1 }\" />\n<B value=\"2\" />\n", "A { 1 }\nB 2\n"},
          Row{"Child { \"C\" \"n\" AttrContainer { } }",
              "<Child>\n<C value=\"'n' AttrContainer { }\" />\n</Child>\n",
              "Child { \n\"C\" \"n\" AttrContainer { }\n}\n"},
          Row{"A 3\" & it's <b>\n", "<A value=\"3&quot; &amp; it&apos;s &lt;b>\" />\n", nullptr},
          Row{"Items 3 { \nA 1\n}\n", "<Items value=\"3\">\n<A value=\"1\" />\n</Items>\n",
              "Items {  3\nA 1\n}\n"},
          Row{"Items {  3\n}\n", "<Items value=\"3\">\n</Items>\n", nullptr},
          Row{"SubContainer { \n\"C.1-b\" \"it's\"\nInstanceID 17\nReferenceToShared \n}\n",
              "<SubContainer>\n<C.1-b value=\"'it&apos;s'\" />\n<InstanceID value=\"17\" />\n"
              "<ReferenceToShared value=\"\" />\n</SubContainer>\n",
              nullptr},
          Row{"SharedInstanceCollection { \nInstances { { 17 42 } \n}\n}\n",
              "<SharedInstanceCollection>\n<Instances>\n{ 17 42 } "
              "</Instances>\n</SharedInstanceCollection>\n",
              nullptr},
          Row{"12 foo\n13 \"<b>\"\n", "12 foo\n13 &quot;&lt;b&gt;&quot;\n", nullptr},
          Row{"{ 1\n2 }\nA 1\n", "{ 1\n2 }<A value=\"1\" />\n", nullptr},
          Row{"1a { \nB 1\n}\n", "1a { \nB 1\n}\n", nullptr},
          // What looks like the root must not end the document.
          Row{"VOXA { \nA 1\n}\n\"VOXA\" 2\n", "VOXA { \nA 1\n}\n&quot;VOXA&quot; 2\n", nullptr},
          // A quoted key keeps its quotes.
          Row{"A { \n\"B\" 1\n\"C\" { \nD 1\n}\n}\n", "<A>\n&quot;B&quot; 1\n&quot;C&quot; { \nD 1\n}</A>\n",
              nullptr},
          // Nothing becomes the class of a block, or a reference, that was none.
          Row{"1\nReferenceToShared \nChild { \nC 1\n}\nChild {  2\nInstanceID 3\n}\n",
              "1\nReferenceToShared <Child>\nC 1</Child>\n<Child value=\"2\">\nInstanceID 3</Child>\n",
              nullptr},
          Row{"A<B<c>> { \n}\n", "<A type=\"B&lt;c&gt;\">\n</A>\n", nullptr},
          Row{"PreObserver \nObserverPath\n", "<PreObserver value=\"\" />\n<ObserverPath value=\"\" />\n",
              "PreObserver \nObserverPath \n"},
          Row{"A \"\\q'\"\n", "<A value=\"'\\q&apos;'\" />\n", nullptr}}) {
        std::optional<std::string> const xml = translateRawText(text, TEXT, XML);
        EXPECT_EQ(xml, expected) << text;
        EXPECT_EQ(translateRawText(xml.value_or(""), XML, TEXT), back ? back : text);
    }
}

TEST(RawText, XmlIsTranslatedByItsMeaning) {
    using Row = std::tuple<char const*, char const*>;
    for (auto const& [xml, text] :
         {Row{"<!-- <A> --><?p?><A/> <B />", "A { \n}\nB { \n}\n"},
          Row{"<A value='x' other=\"y z\"/>", "A { \n'x' \"\"\nother \"y z\"\n}\n"},
          Row{"<A value=\"}\" />", "A \"}\"\n"}, Row{"<A value=\"{ 1 } 2\" />", "A \"{ 1 } 2\"\n"},
          Row{"<A value=\"&quot;x\" />", "A \"\\\"x\"\n"},
          Row{"<A value=\"'a&quot;b' 'c\\' 'd\" />", "A \"a\\\"b\" \"c\\\\\" \"d\"\n"},
          Row{"<A value=\"1\n2\" />", "A 1 2\n"}, Row{"<A>some } text</A>", "A { \n\"some } text\"\n}\n"},
          Row{"<A>some text<B value=\"\" />", "A { \nsome text\nB \n}\n"},
          Row{"</A><B></C></D>", "B { \n}\n"},
          Row{"<PreObserver>\n<Other>\n</Other>\n</PreObserver>", "PreObserver { \nOther { \n}\n}\n"},
          Row{"<a{b value=\"1\" />", "\"a{b\" 1\n"}, Row{"<", ""}, Row{"<A", "A { \n}\n"},
          Row{"<A value=\"1", "A {  1\n}\n"}})
        EXPECT_EQ(translateRawText(xml, XML, TEXT), text) << xml;
}

TEST(RawText, ClassesWithoutAnXmlNameHaveNoXmlForm) {
    for (std::string const name : {"My Class", "a<b>", "", "9", "a\\\"b"})
        for (std::string const block : {"Child", "SubContainer"}) {
            std::string const line = "\"" + name + "\" \"n\"\n";
            EXPECT_FALSE(translateRawText("A { \n" + block + " { \n" + line + "}\n}\n", TEXT, XML)) << name;
            // elsewhere it is nothing that a reader would look for
            std::string const other = "A { \nB 1\n" + line + "}\n";
            auto const xml = translateRawText(other, TEXT, XML);
            ASSERT_TRUE(xml);
            EXPECT_EQ(translateRawText(*xml, XML, TEXT), other);
        }
}

TEST(RawText, NamesFollowTheRulesOfXml) {
    for (char const* name : {"A", "_a", "a-b.c9", "ns:A", "Gr\xC3\xB6\xC3\x9F", "\xF0\x90\x80\x80"})
        EXPECT_TRUE(isXmlName(name)) << name;
    for (char const* name : {"", "9a", "-a", ".a", "a b", "a<b", "a\"", "a/", "a\xC3", "\xC3\x97",
                             "a\xC0\x80", "a\xFF", "\xE0\x80\x80"})
        EXPECT_FALSE(isXmlName(name)) << name;
}

/// Passes over `text` as over the content of a block, which must end exactly where the block does.
bool isBalanced(ModelFormat::Format format, std::string const& text) {
    Document document(format, (format == TEXT ? "A {\n" : "<A>\n") + text +
                                  (format == TEXT ? "\n} End " : "</A><End>"));
    return document.current() == "A" && ModelInFormatAccess::skipEntry(document.imf) &&
           document.current() == "End";
}

TEST(RawText, WhateverComesInWhatComesOutIsBalanced) {
    std::string const text =
        "A<b>{ \"C\" { \"\\\"}\" } x\"=>\"{\" }\n} D{}{ 1 < > & ' }\n\"E\" 1\n{ 2 }Value { \" PreObserver "
        "\nObserverPath { \n} F \"a\"=>\"}\" {\n";
    std::string const xml =
        "<A x=\"y\" value=\"1'}\"/>z{<B type=\"q{\"><C></D>< <!-- - --->\"/>\"><PreObserver> "
        "<ObserverPath></E>}&quot;<?g?>&lt;<Child><F value=\"'\\'{\"/></VOXA>";
    for (auto const& [from, whole] : {std::pair(TEXT, text), std::pair(XML, xml)}) {
        EXPECT_TRUE(translateRawText(whole, from, from == TEXT ? XML : TEXT));
        auto const to = from == TEXT ? XML : TEXT;
        for (std::size_t begin = 0; begin < whole.size(); ++begin)
            for (std::size_t end = begin; end <= whole.size(); ++end) {
                std::string const part = whole.substr(begin, end - begin);
                if (auto const translated = translateRawText(part, from, to)) {
                    EXPECT_TRUE(isBalanced(to, *translated)) << part << "\nbecame\n" << *translated;
                }
            }
    }
}

TEST(RawText, DeepAndLongTextIsTranslatedInLinearTimeWithoutRecursion) {
    std::string text, xml;
    for (int i = 0; i < 100000; ++i) {
        text += "A { ";
        xml += "<A>";
    }
    EXPECT_EQ(translateRawText(text, TEXT, XML).value_or("").size(),
              100000 * std::string("<A>\n</A>\n").size());
    EXPECT_EQ(translateRawText(xml, XML, TEXT).value_or("").size(), 100000 * std::string("A { \n}\n").size());
    EXPECT_TRUE(translateRawText(std::string(200000, '\''), TEXT, XML));
    EXPECT_TRUE(translateRawText("<A value=\"" + std::string(200000, '\''), XML, TEXT));
}

} // namespace
} // namespace Zorvan::AttributeContainer
