// SPDX-License-Identifier: MIT
#include <AttributeContainer/ModelInFormat.h>

#include "ReaderFixture.h"
#include "serialization/ModelInFormatAccess.h"

#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/ModelOutFormat.h>
#include <AttributeContainer/Version.h>
#include <AttributeContainer/WriteToScope.h>

#include <gtest/gtest.h>

#include <thread>

namespace Zorvan::AttributeContainer {
namespace {

using Access = ModelInFormatAccess;
using Keywords = std::vector<std::string>;

constexpr auto TEXT = ModelFormat::Text;
constexpr auto XML = ModelFormat::XmlV2;

TEST(ModelInFormat, KeywordsAreSplitByTheRulesOfTheRendering) {
    struct Row {
        ModelFormat::Format format;
        char const* text;
        Keywords keywords;
    };
    Row const rows[] = {
        {TEXT, "", {}},
        {TEXT, " \n\t", {}},
        {TEXT, "\nAttr<int> { \nName \"a b\" \n}\n}", {"Attr<int>", "{", "Name", "a b", "}", "}"}},
        {TEXT, "Foo{ }} x\n", {"Foo{", "}", "}", "x"}},
        {TEXT, "\"a\\\"b\\nc\\\\\" \"\" \"}\" ", {"a\"bnc\\", "", "}"}},
        {TEXT, "one lost", {"one"}},
        {TEXT, "one \"lost", {"one"}},
        {TEXT, "one \"lost\\", {"one"}},
        {ModelFormat::Xml, "<A> { ", {"<A>", "{"}},
        {XML, "", {}},
        {XML, "<A>\n<B>\n</B>\n</A>\n", {"A", "{", "B", "{", "}", "}"}},
        {XML, "<Attr type=\"int\">\n</Attr>", {"Attr<int>", "{", "}"}},
        {XML, "<Attr  type = \"Vec3dd\" >\n</Attr>", {"Attr<Vec3dd>", "{", "}"}},
        {XML, "<A value=\"\" /><B value=\"\" /></C>", {"A", "B", "}"}},
        {XML, "<A value=\"\">\n<B>", {"A", "{", "B", "{"}},
        {XML, "<!-- <A> --> <?pi ?> <!--x--><A>\n<!---->", {"A", "{"}},
        {XML, "<A>\n<!-- - -- --->\n<B>\n", {"A", "{", "B", "{"}},
        {XML, "<!DOCTYPE a><A>", {"A", "{"}},
        {XML, "<A>\n</VOXA><B>\n</B>\n", {"A", "{"}},
        {XML, "<A\n\tvalue=\"\"\n/>\n<B>", {"A", "B", "{"}},
        // malformed: each bad place shows as an empty keyword, and reading gets past it
        {XML, "x <A>", {"", "A", "{"}},
        {XML, "<A/><B>", {"", "B", "{"}},
        {XML, "<A /><B>", {"", "B", "{"}},
        {XML, "<><B>", {"", "B", "{"}},
        {XML, "<A other=\"\"><B>", {"", "{", "B", "{"}},
        {XML, "<Attr type=\"int\" /><B>", {"Attr<int>", "", "B", "{"}},
        {XML, "<A value=\"\" x>", {"A", "", "{"}},
        {XML, "<A><", {"A", "{"}},
        {XML, "<A><B", {"A", "{"}},
        {XML, "<A></B", {"A", "{"}},
        {XML, "<A><!-- ", {"A", "{"}},
        {XML, "<A><Attr type=\"int", {"A", "{"}},
        {XML, "<A value=\"\" /", {"A"}},
    };
    for (auto const& row : rows)
        EXPECT_EQ(keywordsOf(row.format, row.text), row.keywords) << row.text;
}

TEST(ModelInFormat, ValuesAreReadFromTheStreamBehindTheirKeyword) {
    struct Row {
        ModelFormat::Format format;
        char const* text;
    };
    for (Row const row : {Row{TEXT, "Value 5\n}\n"}, Row{XML, "<Value value=\"5\" />\n</Attr>\n"}}) {
        Document document(row.format, row.text);
        EXPECT_EQ(document.current(), "Value");
        EXPECT_EQ(Access::insideValue(document.imf), row.format == XML);
        EXPECT_EQ(DataInFormat<int>(document.in, row.format).take(), 5);
        EXPECT_EQ(document.next(), "}");
        EXPECT_FALSE(Access::insideValue(document.imf));
        EXPECT_EQ(document.next(), "<end>");
        EXPECT_FALSE(document.in.fail());
    }
}

TEST(ModelInFormat, WordsCutByTheEndOfTheInputAreRemembered) {
    struct Row {
        ModelFormat::Format format;
        char const* text;
        bool lost;
    };
    for (Row const row :
         {Row{TEXT, "A ", false}, Row{TEXT, "A { }", false}, Row{TEXT, "A", true}, Row{TEXT, "\"A", true},
          Row{TEXT, "\"A\"", false}, Row{XML, "<A>\n", false}, Row{XML, "<A", true}, Row{XML, "<", true},
          Row{XML, "<A>\n</A>", false}, Row{XML, "<A>\n</A", true}, Row{XML, "<A value=\"\" /", true}}) {
        Document document(row.format, row.text);
        while (document.imf.getKeyword())
            document.imf.nextKeyword();
        EXPECT_EQ(Access::wordLost(document.imf), row.lost) << row.text;
        EXPECT_TRUE(document.in.eof());
    }
}

TEST(ModelInFormat, EveryPrefixOfADocumentComesToAnEnd) {
    std::string const text =
        "\"T\"\nA { \n\"C\\\"\" \"n{\"\nAttr<int> { \nValue { 1 2 } \n}\nB 1 \"a\"=>\"}\"\n}\n";
    std::string const xml =
        "<!-- 'T' -->\n<VOXA>\n<A>\n<C value=\"'n{'\" />\n<Attr type=\"int\">\n<Value value=\"{ 1 "
        "2 } \" />\n</Attr>\n<?p?><B value=\"1 'a'=>'}'\" x=\"y\"/>\n</A>\n</VOXA>";
    for (auto const& [format, document] : {std::pair(TEXT, text), std::pair(XML, xml)})
        for (std::size_t length = 0; length <= document.size(); ++length)
            EXPECT_LT(keywordsOf(format, document.substr(0, length), 1000).size(), 1000u) << length;
}

TEST(ModelInFormat, DeepNestingNeedsNoStack) {
    std::string xml;
    for (int i = 0; i < 200000; ++i)
        xml += "<!-- c --><A value=\"\" />";
    EXPECT_EQ(keywordsOf(XML, xml, 300000).size(), 200000u);
    std::string comments;
    for (int i = 0; i < 200000; ++i)
        comments += "<!---->";
    EXPECT_EQ(keywordsOf(XML, comments + "<A>"), (Keywords{"A", "{"}));
}

TEST(ModelInFormat, RenderingIsRecognised) {
    std::string const header = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    struct Row {
        std::string text;
        int format;
        std::string rest;
    };
    Row const rows[] = {
        {"", TEXT, ""},
        {" { A", TEXT, "{ A"},
        {"\"title\"\n", TEXT, "\"title\"\n"},
        {"\n" + header + "<!-- XML v. 2 -->\n<A>", XML, "<A>"},
        {header + "<!-- XML v. 2 -->", XML, ""},
        {header + "<!-- XML v. 3 -->\n<A>", TEXT, "<A>"},
        {header, TEXT, ""},
        {"<A>\n<B>\n", TEXT, "<B>\n"},
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<!-- XML v. 2 -->\n", TEXT, "<!-- XML v. 2 -->\n"},
    };
    for (auto const& row : rows) {
        std::istringstream in(row.text);
        ModelInFormat imf(in);
        EXPECT_EQ(imf.determineFormat(), row.format) << row.text;
        in.clear();
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), row.rest);
    }
}

TEST(ModelInFormat, HeadersComeBackAsTheyWereWritten) {
    for (auto const format : {TEXT, XML}) {
        for (std::string const title : {"Countries: 1\xC3\xA9", "", " ", "'quoted'", "\"x\"", "a -- b",
                                        "two\nlines", " a ", "-", "<&>'\"\\"}) {
            for (bool const versions : {false, true}) {
                auto context = std::make_shared<WriteContextBase>(format);
                std::stringstream stream;
                {
                    WriteToScope scope(stream, context);
                    ModelOutFormat& mof = scope.getMof();
                    if (versions)
                        mof.writeHeader(title, version, true);
                    else
                        mof.writeHeader(title);
                    mof.startBlock("A").endBlock();
                    mof.writeFooter();
                }
                std::string const written = stream.str();
                ModelInFormat recognised(stream);
                ASSERT_EQ(recognised.determineFormat(), format);
                ReadFromScope scope(stream, readContext(format));
                ModelInFormat& imf = scope.getImf();
                std::string found = "?";
                imf.readHeader(found);
                EXPECT_EQ(found, title) << written;
                if (versions) {
                    VersionNum number("", 0, 0, 0, 0, 0, "");
                    imf.readVersion(number);
                    EXPECT_EQ(number.name + number.getReleaseNumbers(), "WtLib9.1.0.0") << written;
                    imf.readRootModelVersion(number);
                    EXPECT_EQ(number.name + number.getReleaseNumbers(), "1.00.0.0.0");
                    EXPECT_TRUE(imf.readVoxaStart());
                }
                EXPECT_EQ(Access::voxaOpen(imf), format == XML);
                EXPECT_EQ(imf.getKeyword(), "A") << written;
                imf.nextKeyword();
                imf.nextKeyword();
                EXPECT_EQ(imf.getKeyword(), "}");
                imf.nextKeyword();
                EXPECT_FALSE(imf.getKeyword());
                EXPECT_FALSE(Access::voxaOpen(imf));
                EXPECT_FALSE(Access::wordLost(imf));
                EXPECT_TRUE(imf.readVoxaEnd());
            }
        }
    }
}

TEST(ModelInFormat, HeadersOfOtherWritersAreRead) {
    struct Row {
        char const* text;
        char const* title;
        char const* rest;
    };
    for (Row const row :
         {Row{"<!-- 'a &lt;b' -->\n<!-- NEXT: XML Root Element -->\n<VOXA>\n<A>", "a <b", "<A>"},
          Row{"<!-- \"a \\&quot;b&amp;lt;\" -->\nx\n<A>", "a \"b&lt;", "<A>"},
          Row{"<!-- a > b -->\nx\n<A>", "a > b", "<A>"}, Row{"<!-- -->\nx\n<A>", "", "<A>"},
          Row{"<!--a -->\nx\n<A>", "a", "<A>"}, Row{"<!-- not ended\nx\n<A>", "not ended", "<A>"},
          Row{"<!-- a", "a", ""}}) {
        Document document(XML, row.text);
        std::string title;
        document.imf.readHeader(title);
        EXPECT_EQ(title, row.title);
        EXPECT_EQ(document.rest(), row.rest) << row.text;
    }
}

TEST(ModelInFormat, RootTagsAreExpectedOnALineOfTheirOwn) {
    for (auto const& [text, found] : {std::pair<std::string, bool>{" <voxa>\n<A>", true},
                                      {"<VOXA><A>\n", false},
                                      {"", false},
                                      {std::string(200, 'x'), false}}) {
        Document document(XML, text);
        EXPECT_EQ(document.imf.readVoxaStart(), found) << text;
        EXPECT_EQ(Access::voxaOpen(document.imf), found);
        EXPECT_TRUE(document.imf.readVoxaEnd());
    }
    Document text(TEXT, "A ");
    EXPECT_TRUE(text.imf.readVoxaStart());
    EXPECT_TRUE(text.imf.readVoxaEnd());
    EXPECT_EQ(text.current(), "A");
}

TEST(ModelInFormat, RootEndIsTheEndForEveryEnclosingReader) {
    Document outer(XML, "<A>\n</VOXA>\n<B>\n");
    EXPECT_EQ(outer.next(), "A");
    {
        ReadFromScope middle(outer.in, readContext(XML));
        ReadFromScope inner(outer.in, readContext(XML));
        inner.getImf().nextKeyword();
        ModelInFormat::setPropagateKeyword(std::string("}"));
        inner.getImf().nextKeyword();
        inner.getImf().nextKeyword();
        EXPECT_FALSE(inner.getImf().getKeyword());
        EXPECT_FALSE(Access::isPropagated());
    }
    EXPECT_EQ(outer.current(), "<end>");
    EXPECT_EQ(outer.next(), "<end>");
    EXPECT_TRUE(Access::ended(outer.imf));
    EXPECT_EQ(outer.rest(), "\n<B>\n");
}

TEST(ModelInFormat, NestedReadersHandTheirLookAheadOver) {
    for (auto const& [format, text] :
         {std::pair(TEXT, "A { \nB 1\n}\n"), std::pair(XML, "<A>\n<B value=\"1\" />\n</A>\n")}) {
        Document outer(format, text);
        EXPECT_EQ(outer.current(), "A");
        {
            ReadFromScope scope(outer.in, readContext(format));
            ModelInFormat& inner = scope.getImf();
            EXPECT_TRUE(Access::isOutermost(outer.imf));
            EXPECT_FALSE(Access::isOutermost(inner));
            EXPECT_EQ(inner.getKeyword(), "A");
            inner.nextKeyword();
            inner.nextKeyword();
            EXPECT_EQ(inner.getKeyword(), "B");
        }
        EXPECT_EQ(outer.current(), "B");
        EXPECT_EQ(Access::insideValue(outer.imf), format == XML);
        EXPECT_EQ(DataInFormat<int>(outer.in, format).take(), 1);
        EXPECT_EQ(outer.next(), "}");
    }
}

TEST(ModelInFormat, ReadersOfOtherStreamsKeepTheirOwnLookAhead) {
    Document outer(TEXT, "A B C ");
    EXPECT_EQ(outer.current(), "A");
    {
        Document other(TEXT, "X Y ");
        EXPECT_TRUE(Access::isOutermost(other.imf));
        EXPECT_EQ(other.current(), "X");
        ModelInFormat::setPropagateKeyword(std::string("}"));
        {
            ReadFromScope again(outer.in, readContext(TEXT));
            EXPECT_FALSE(Access::isOutermost(again.getImf())) << "there is a reader around on its stream";
            EXPECT_EQ(again.getImf().getKeyword(), "B");
            ModelInFormat::setPropagateKeyword(std::string("leak"));
        }
        EXPECT_EQ(other.next(), "}");
    }
    EXPECT_EQ(outer.current(), "A");
    EXPECT_EQ(outer.next(), "C");
}

TEST(ModelInFormat, PropagatedKeywordComesOnceAndWithoutReading) {
    ModelInFormat::setPropagateKeyword(std::string("before"));
    {
        Document document(TEXT, "A { ");
        EXPECT_EQ(document.current(), "before");
        EXPECT_EQ(document.next(), "A");
        ModelInFormat::setPropagateKeyword(std::string("}"));
        EXPECT_EQ(document.current(), "A");
        EXPECT_TRUE(Access::takePropagated(document.imf));
        EXPECT_FALSE(Access::takePropagated(document.imf));
        EXPECT_TRUE(Access::isBlockEnd(document.imf));
        EXPECT_EQ(document.next(), "{");
        ModelInFormat::setPropagateKeyword(std::string("x"));
        ModelInFormat::setPropagateKeyword(std::string());
        EXPECT_FALSE(Access::isPropagated());
        ModelInFormat::setPropagateKeyword(std::string("x"));
        ModelInFormat::setPropagateKeyword(std::nullopt);
        EXPECT_FALSE(Access::isPropagated());
    }
}

TEST(ModelInFormat, PropagatedKeywordStaysWithItsDocument) {
    {
        Document outer(TEXT, "A B ");
        ModelInFormat::setPropagateKeyword(std::string("}"));
        {
            Document other(TEXT, "X ");
            EXPECT_EQ(other.current(), "X");
            ModelInFormat::setPropagateKeyword(std::string("leak"));
        }
        { // a reader within the document leaves it alone
            ReadFromScope inner(outer.in);
        }
        std::thread([] { EXPECT_FALSE(Access::isPropagated()); }).join();
        EXPECT_EQ(outer.current(), "}");
        ModelInFormat::setPropagateKeyword(std::string("left"));
    }
    EXPECT_FALSE(Access::isPropagated());
}

TEST(ModelInFormat, LinesAndBlocksAreSkippedWithoutRegardToTheirContent) {
    Document document(TEXT, "A 1 { \nB x \"}\" y\nC ");
    EXPECT_EQ(document.current(), "A");
    EXPECT_TRUE(document.imf.skipRestOfLine());
    EXPECT_EQ(document.current(), "B");
    EXPECT_TRUE(document.imf.skipToEndOfBlock());
    EXPECT_EQ(document.rest(), "\" y\nC ");
    for (bool const line : {true, false}) {
        Document ended(TEXT, "A b");
        EXPECT_FALSE(line ? ended.imf.skipRestOfLine() : ended.imf.skipToEndOfBlock());
        EXPECT_EQ(ended.current(), "<end>");
    }
}

TEST(ModelInFormat, RawReadGoesThroughTheRestOfTheKeywordIntoTheStream) {
    Document document(TEXT, "abc de");
    EXPECT_EQ(document.current(), "abc");
    Access::consumeOfKeyword(document.imf, 1);
    EXPECT_EQ(document.imf.rawRead(false), 'b');
    EXPECT_EQ(document.imf.rawRead(true), 'b');
    EXPECT_EQ(document.current(), "c");
    EXPECT_EQ(document.imf.rawRead(true), ' ') << "a keyword that is not begun stays";
    Access::consumeOfKeyword(document.imf, 1);
    EXPECT_EQ(document.imf.rawRead(false), 'd');
    document.imf.readBeforeBuf();
    EXPECT_EQ(document.imf.rawRead(true), 'e');
    EXPECT_EQ(document.imf.rawRead(true), std::istream::traits_type::eof());
    EXPECT_TRUE(document.in.fail());
}

} // namespace
} // namespace Zorvan::AttributeContainer
