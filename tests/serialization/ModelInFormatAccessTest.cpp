// SPDX-License-Identifier: MIT
#include "serialization/ModelInFormatAccess.h"

#include "ReaderFixture.h"

#include <gtest/gtest.h>

namespace Zorvan::AttributeContainer {
namespace {

using Access = ModelInFormatAccess;

constexpr auto TEXT = ModelFormat::Text;
constexpr auto XML = ModelFormat::XmlV2;

struct Row {
    ModelFormat::Format format;
    char const* text; ///< begins with the keyword of the entry
    /// What belongs to it, with the white space that follows; null: all before the last tag.
    char const* entry;
    char const* next; ///< the keyword behind it
};

Row const ENTRIES[] = {
    {TEXT, "Foo 5 x\nBar ", "Foo 5 x\n", "Bar"},
    {TEXT, "Foo\nBar ", "Foo\n", "Bar"},
    {TEXT, "Foo \"}\" \"{\\\"\" \"\n\"\n}", "Foo \"}\" \"{\\\"\" \"\n\"\n", "}"},
    {TEXT, "Foo 1 }", "Foo 1 ", "}"},
    {TEXT, "Foo { \nA { } \"}\" B\n} \nBar ", "Foo { \nA { } \"}\" B\n} \n", "Bar"},
    {TEXT, "Foo { 1 } { 2 }", "Foo { 1 } ", "{"},
    {TEXT, "{ a } b ", "{ a } ", "b"},
    {TEXT, "Foo{ 1 }}", "Foo{ 1 }", "}"},
    {TEXT, "Foo{} Bar ", "Foo{} ", "Bar"},
    {TEXT, "Foo 1 \"{\"=>\"a }\" \"b\"=>\"{\"\nBar ", "Foo 1 \"{\"=>\"a }\" \"b\"=>\"{\"\n", "Bar"},
    {TEXT, "Foo 3\" {\n}\nBar ", "Foo 3\" {\n}\n", "Bar"},
    {TEXT, "\"Name {\" {\n}\nBar ", "\"Name {\" {\n}\n", "Bar"},
    {TEXT, "\"}\" x\nBar ", "\"}\" x\n", "Bar"},
    {XML, "<Foo value=\"</Foo> 'a'=>'b'\" />\n<!-- c -->\n</A>",
     "<Foo value=\"</Foo> 'a'=>'b'\" />\n<!-- c -->\n", "}"},
    {XML, "<Foo>\n<Foo value=\"<Foo>\" /><!-- <Foo> --><?p <Foo> ?>text</Foo>\n<Bar>", nullptr, "Bar"},
    {XML, "<Attr type=\"int\">\n<Name value=\"'a'\" />\n</Attr>\n</A>", nullptr, "}"},
    {XML, "<Foo value=\"3\">\n<A>\n</A>\n</Foo>\n</B>", nullptr, "}"},
    {XML, "<Foo other=\"</Foo>\">\n</Foo>\n<Bar>", nullptr, "Bar"},
    {XML, "<Foo other=\"1\" value=\"/>\"/>\n<Bar>", nullptr, "Bar"},
    {XML, "<Foo/><Bar>", "<Foo/>", "Bar"},
    {XML, "<Attr type=\"int\"/><Bar>", nullptr, "Bar"},
    {XML, "{ 17 42 } </Foo>", "{ 17 42 } ", "}"},
    {XML, "/ x <Bar>", "/ x ", "Bar"},
};

std::string entryOf(Row const& row) {
    std::string_view const text = row.text;
    return std::string(row.entry ? row.entry : text.substr(0, text.rfind('<')));
}

TEST(ModelInFormatAccess, EntriesAreSkippedWhole) {
    for (auto const& row : ENTRIES) {
        Document document(row.format, row.text);
        document.imf.nextKeyword();
        EXPECT_TRUE(Access::skipEntry(document.imf)) << row.text;
        EXPECT_EQ(document.current(), row.next) << row.text;
    }
}

TEST(ModelInFormatAccess, CapturedEntriesReproduceTheText) {
    for (auto const& row : ENTRIES) {
        Document document(row.format, row.text);
        std::string text = "kept:";
        EXPECT_TRUE(Access::captureEntry(document.imf, text)) << row.text;
        EXPECT_EQ(text, "kept:" + entryOf(row));
        EXPECT_EQ(document.current(), row.next) << row.text;
    }
    for (auto const& [format, body] :
         {std::pair<ModelFormat::Format, std::string>{TEXT, "A 1\n\n  B { \nC \"}\"\n} D\n\"E\" \"f\"\n"},
          {XML, "<A value=\"1\" />\n\n <!-- c --><B>\nx\n</B><C type=\"d\">\n</C>stray\n<D "
                "value=\"\">\n</D>\n"}}) {
        Document document(format, body + (format == TEXT ? "}" : "</X>"));
        std::string text;
        while (!Access::isBlockEnd(document.imf))
            ASSERT_TRUE(Access::captureEntry(document.imf, text));
        EXPECT_EQ(text, body);
    }
}

TEST(ModelInFormatAccess, BlocksCanBePassedFromTheirBraceOn) {
    for (auto const& [format, text] :
         {std::pair(TEXT, "A { \nB { \n}\n}\nC "), std::pair(XML, "<A>\n<B>\n</B>\n</A>\n<C>")}) {
        Document document(format, text);
        EXPECT_EQ(document.current(), "A");
        EXPECT_EQ(document.next(), "{");
        EXPECT_TRUE(Access::skipEntry(document.imf));
        EXPECT_EQ(document.current(), "C");
    }
}

TEST(ModelInFormatAccess, EntriesCutByTheEndOfTheInputFail) {
    struct Cut {
        ModelFormat::Format format;
        char const* text;
        bool complete;
        bool lost;
    };
    for (Cut const row :
         {Cut{TEXT, "Foo { ", false, false}, Cut{TEXT, "Foo \"a ", false, false},
          Cut{TEXT, "Foo { \"}", false, false}, Cut{TEXT, "Foo 5\n", true, false},
          Cut{TEXT, "Foo 5", true, true}, Cut{TEXT, "Foo { }", true, false},
          Cut{XML, "<Foo>\n", false, false}, Cut{XML, "<Foo value=\"", false, false},
          Cut{XML, "<Foo value=\"\" /", false, false}, Cut{XML, "<Foo>\n<!-- </Foo>", false, false},
          Cut{XML, "<Foo>\n</Foo", false, false}, Cut{XML, "<Foo>\n</Foo>", true, false},
          Cut{XML, "<Foo>\n<A></VOXA>", false, false}}) {
        for (bool const capture : {false, true}) {
            Document document(row.format, row.text);
            std::string text;
            document.imf.nextKeyword();
            EXPECT_EQ(capture ? Access::captureEntry(document.imf, text) : Access::skipEntry(document.imf),
                      row.complete)
                << row.text;
            EXPECT_EQ(document.in.fail(), !row.complete) << row.text;
            EXPECT_EQ(Access::wordLost(document.imf), row.lost) << row.text;
            EXPECT_EQ(document.current(), "<end>");
        }
    }
}

TEST(ModelInFormatAccess, EveryPrefixIsPassedInSteps) {
    std::string const text = "A{ B \"}\" { } \"x\\\"\"=>\"{\" }\n} C{}{ D }\n\"E\" 1\n{ 2 }";
    std::string const xml =
        "<A x=\"y\" value=\"1\"/>z<B><C></D>< <!-- - --->\"/>\"><E type=\"f\"><?g?></E></VOXA>";
    for (auto const& [format, whole] : {std::pair(TEXT, text), std::pair(XML, xml)}) {
        for (std::size_t begin = 0; begin < whole.size(); ++begin) {
            for (std::size_t end = begin; end <= whole.size(); ++end) {
                Document document(format, whole.substr(begin, end - begin));
                std::string kept;
                std::size_t steps = 0;
                while (document.imf.getKeyword() && steps++ < 200)
                    Access::captureEntry(document.imf, kept);
                EXPECT_LE(steps, end - begin);
                EXPECT_LE(kept.size(), end - begin);
            }
        }
    }
}

TEST(ModelInFormatAccess, QuotedBraceIsNoBlockEnd) {
    Document document(TEXT, "\"}\" } \"{\" { ");
    EXPECT_FALSE(Access::isBlockEnd(document.imf));
    EXPECT_TRUE(Access::keywordQuoted(document.imf));
    EXPECT_EQ(Access::rawKeyword(document.imf), "\"}\"");
    document.imf.nextKeyword();
    EXPECT_TRUE(Access::isBlockEnd(document.imf));
    document.imf.nextKeyword();
    EXPECT_FALSE(Access::isBlockStart(document.imf));
    document.imf.nextKeyword();
    EXPECT_TRUE(Access::isBlockStart(document.imf));
}

TEST(ModelInFormatAccess, DroppedKeywordIsNotReadAgain) {
    Document document(TEXT, "A B ");
    EXPECT_EQ(document.current(), "A");
    Access::dropKeyword(document.imf);
    EXPECT_EQ(document.current(), "B");
}

} // namespace
} // namespace Zorvan::AttributeContainer
