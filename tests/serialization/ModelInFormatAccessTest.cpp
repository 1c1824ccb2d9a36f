// SPDX-License-Identifier: MIT
#include "serialization/ModelInFormatAccess.h"

#include "ReaderFixture.h"

#include <gtest/gtest.h>

namespace Zorvan::AttributeContainer {
namespace {

using Access = ModelInFormatAccess;

TEST(ModelInFormatAccess, EntriesAreSkippedWholeAndCapturedAsTheyStand) {
    // The entry with the white space that follows, what is behind it, and the keyword there, with bars
    // between.
    char const* const text =
        "Foo 5 x\n|Bar |Bar^Foo\n|Bar |Bar^Foo \"}\" \"{\\\"\" \"\n\"\n|}|}^Foo 1 |}|}^"
        "Foo { \nA { } \"}\" B\n} \n|Bar |Bar^Foo { 1 } |{ 2 }|{^{ a } |b |b^Foo{ 1 }|}|}^Foo{} |Bar |Bar^"
        "Foo 1 \"{\"=>\"a }\" \"b\"=>\"{\"\n|Bar |Bar^Foo 3\" {\n}\n|Bar |Bar^\"Name {\" {\n}\n|Bar |Bar^"
        "\"}\" x\n|Bar |Bar";
    char const* const xml =
        "<Foo value=\"</Foo> 'a'=>'b'\" />\n<!-- c -->\n|</A>|}^"
        "<Foo>\n<Foo value=\"<Foo>\" /><!-- <Foo> --><?p <Foo> ?>text</Foo>\n|<Bar>|Bar^"
        "<Attr type=\"int\">\n<Name value=\"'a'\" />\n</Attr>\n|</A>|}^"
        "<Foo value=\"3\">\n<A>\n</A>\n</Foo>\n|</B>|}^<Foo other=\"</Foo>\">\n</Foo>\n|<Bar>|Bar^"
        "<Foo other=\"1\" value=\"/>\"/>\n|<Bar>|Bar^<Foo/>|<Bar>|Bar^<Attr type=\"int\"/>|<Bar>|Bar^"
        "{ 17 42 } |</Foo>|}^/ x |<Bar>|Bar";
    for (auto const& [format, rows] : {std::pair(TEXT, text), std::pair(XML, xml)}) {
        std::istringstream list(rows);
        for (std::string row; std::getline(list, row, '^');) {
            std::size_t const length = row.find('|'), last = row.rfind('|');
            std::string const entry = row.substr(0, length);
            for (bool const capture : {false, true}) {
                Document document(format, entry + row.substr(length + 1, last - length - 1));
                std::string kept = "kept:";
                EXPECT_TRUE(capture ? Access::captureEntry(document.imf, kept)
                                    : Access::skipEntry(document.imf))
                    << row;
                EXPECT_EQ(kept, capture ? "kept:" + entry : "kept:");
                EXPECT_EQ(document.current(), row.substr(last + 1)) << row;
            }
        }
    }
}

TEST(ModelInFormatAccess, EntriesCutByTheEndOfTheInputFail) {
    struct Row {
        ModelFormat::Format format;
        char const* text;
        bool complete = false;
    };
    for (Row const& row :
         {Row{TEXT, "Foo { "}, Row{TEXT, "Foo \"a "}, Row{TEXT, "Foo { \"}"}, Row{TEXT, "Foo 5\n", true},
          Row{TEXT, "Foo 5", true}, Row{TEXT, "Foo { }", true}, Row{XML, "<Foo>\n"},
          Row{XML, "<Foo value=\""}, Row{XML, "<Foo value=\"\" /"}, Row{XML, "<Foo>\n<!-- </Foo>"},
          Row{XML, "<Foo>\n</Foo"}, Row{XML, "<Foo>\n</Foo>", true}, Row{XML, "<Foo>\n<A></VOXA>"}})
        for (bool const capture : {false, true}) {
            Document document(row.format, row.text);
            std::string kept;
            document.imf.nextKeyword();
            EXPECT_EQ(capture ? Access::captureEntry(document.imf, kept) : Access::skipEntry(document.imf),
                      row.complete)
                << row.text;
            EXPECT_EQ(document.in.fail(), !row.complete) << row.text;
            EXPECT_EQ(Access::wordLost(document.imf), row.text == std::string("Foo 5")) << row.text;
            EXPECT_EQ(document.current(), "<end>");
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

} // namespace
} // namespace Zorvan::AttributeContainer
