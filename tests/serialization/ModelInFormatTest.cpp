// SPDX-License-Identifier: MIT
#include <AttributeContainer/ModelInFormat.h>

#include "DataFile.h"
#include "ReaderFixture.h"
#include "serialization/ModelInFormatAccess.h"

#include <thread>

namespace Zorvan::AttributeContainer {
namespace {

using Access = ModelInFormatAccess;
using Keywords = std::vector<std::string>;

Keywords keywordsOf(ModelInFormat& imf) {
    Keywords keywords;
    for (; imf.getKeyword(); imf.nextKeyword())
        keywords.push_back(*imf.getKeyword());
    return keywords;
}

TEST(ModelInFormat, KeywordsAreSplitByTheRulesOfTheRendering) {
    for (auto const& row : dataRows("serialization/keywords.txt")) {
        Document document(formatOf(row[0]), row[1]);
        std::string found;
        for (auto const& keyword : keywordsOf(document.imf))
            found += "[" + keyword + "]";
        EXPECT_EQ(row[2], found) << row.place;
        EXPECT_EQ(row[3] == "lost", Access::wordLost(document.imf)) << row.place;
    }
}

TEST(ModelInFormat, RenderingsAndHeadersOfOtherWritersAreRead) {
    for (auto const& row : dataRows("serialization/headers.txt")) {
        if (row.section == "rendering") {
            std::istringstream in(row[0]);
            EXPECT_EQ(formatOf(row[1]), ModelInFormat(in).determineFormat()) << row.place;
            EXPECT_EQ(row[2], restOf(in)) << row.place;
            continue;
        }
        Document document(XML, row[0]);
        std::string title;
        document.imf.readHeader(title);
        EXPECT_EQ(row[1], title) << row.place;
        EXPECT_EQ(row[2], restOf(document.in)) << row.place;
    }
}

TEST(ModelInFormat, RootTagsAreExpectedOnALineOfTheirOwn) {
    for (char const* const text : {" <voxa>\n<A>", "<VOXA><A>\n", "", "<VOXA"}) {
        Document document(XML, text);
        bool const isFound = std::string(text).find(">\n<A>") != std::string::npos;
        EXPECT_EQ(document.imf.readVoxaStart(), isFound) << text;
        EXPECT_EQ(Access::voxaOpen(document.imf), isFound);
        EXPECT_TRUE(document.imf.readVoxaEnd());
    }
    Document plain(TEXT, "A ");
    EXPECT_TRUE(plain.imf.readVoxaStart() && plain.imf.readVoxaEnd() && plain.current() == "A");
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
    EXPECT_EQ(restOf(outer.in), "\n<B>\n");
}

TEST(ModelInFormat, LookAheadAndPropagatedKeywordStayWithTheirDocument) {
    ModelInFormat::setPropagateKeyword(std::string("before"));
    {
        Document outer(TEXT, "A B C ");
        EXPECT_EQ(outer.current(), "before");
        EXPECT_EQ(outer.next(), "A");
        ModelInFormat::setPropagateKeyword(std::string("}"));
        EXPECT_EQ(outer.current(), "A");
        {
            Document other(TEXT, "X Y ");
            EXPECT_TRUE(Access::isOutermost(other.imf));
            EXPECT_EQ(other.current(), "X");
            ReadFromScope again(outer.in, readContext(TEXT));
            EXPECT_FALSE(Access::isOutermost(again.getImf())) << "there is a reader around on its stream";
            EXPECT_EQ(again.getImf().getKeyword(), "B");
            ModelInFormat::setPropagateKeyword(std::string("leak"));
        }
        std::thread([] { EXPECT_FALSE(Access::isPropagated()); }).join();
        EXPECT_TRUE(Access::takePropagated(outer.imf) && !Access::takePropagated(outer.imf));
        EXPECT_TRUE(Access::isBlockEnd(outer.imf));
        EXPECT_EQ(outer.next(), "C");
        ModelInFormat::setPropagateKeyword(std::string("x"));
        ModelInFormat::setPropagateKeyword(std::string());
        EXPECT_FALSE(Access::isPropagated());
        ModelInFormat::setPropagateKeyword(std::string("left"));
    }
    EXPECT_FALSE(Access::isPropagated());
}

TEST(ModelInFormat, LinesAndBlocksAreSkippedWithoutRegardToTheirContent) {
    Document document(TEXT, "A 1 { \nB x \"}\" y\nC b");
    EXPECT_EQ(document.current(), "A");
    EXPECT_TRUE(document.imf.skipRestOfLine());
    EXPECT_EQ(document.current(), "B");
    EXPECT_TRUE(document.imf.skipToEndOfBlock());
    EXPECT_FALSE(document.imf.skipToEndOfBlock());
    EXPECT_EQ(document.current(), "<end>");
    EXPECT_FALSE(Document(TEXT, "A b").imf.skipRestOfLine());
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
