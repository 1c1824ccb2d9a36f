// SPDX-License-Identifier: MIT
#include <AttributeContainer/DataOutFormat.h>
#include <AttributeContainer/ModelOutFormat.h>
#include <AttributeContainer/Version.h>
#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/WriteToScope.h>

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

namespace Zorvan::AttributeContainer {

namespace {

using Writing = std::function<void(ModelOutFormat&)>;

std::string written(ModelFormat::Format format, Writing const& writing) {
    std::ostringstream out;
    WriteToScope scope(out, std::make_shared<WriteContextBase>(format));
    writing(scope.getMof());
    return out.str();
}

Version numbered(int major) {
    VersionNum const none("none", 0, 0, 0, 0, 0, "");
    return {none, VersionNum("WtLib", major, 1, 0, 0, 0, ""), none,
            none, VersionNum("Root", 1, 2, 3, 4, 5, ""),      ""};
}

class CountingBuffer : public std::stringbuf {
public:
    int syncs = 0;

protected:
    int sync() override {
        ++syncs;
        return 0;
    }
};

} // namespace

TEST(ModelOutFormatTest, OperationsWriteTheirTextInEachRendering) {
    struct Row {
        Writing writing;
        std::string text, xml, xmlV2;
    };
    Row const rows[] = {
        {[](ModelOutFormat& mof) { mof.startBlock("A").startBlock("B").endBlock().endBlock(); },
         "\nA { \nB { \n}\n}", "<A>\n<B>\n</B>\n</A>\n", "<A>\n<B>\n</B>\n</A>\n"},
        {[](ModelOutFormat& mof) { mof.startBlock("A", "x=\"1\""); }, "", "<A x=\"1\">", "<A x=\"1\">\n"},
        {[](ModelOutFormat& mof) { mof.startAttributeBlock("Attr<int>").endBlock(); }, "\nAttr<int> { \n}",
         "<Attr type=\"int\">\n</Attr>\n", "<Attr type=\"int\">\n</Attr>\n"},
        {[](ModelOutFormat& mof) { mof.startAttributeBlock("Attr<A<B>"); }, "\nAttr<A<B> { ",
         "<Attr type=\"B\">\n", "<Attr type=\"B\">\n"},
        {[](ModelOutFormat& mof) { mof.startBlockWithSize("Items", 3, false); }, "\nItems {  3",
         "<Items value=\"3\">\n", "<Items value=\"3\">\n"},
        {[](ModelOutFormat& mof) { mof.startBlockWithSize("Items", 12345678901234567890U, true); },
         "\nItems 12345678901234567890 { ", "<Items value=\"12345678901234567890\">\n",
         "<Items value=\"12345678901234567890\">\n"},
        {[](ModelOutFormat& mof) {
             mof.startValue("Key");
             mof.output() << 5;
             mof.endValue();
         },
         "\nKey 5", "<Key value=\"5\" />\n", "<Key value=\"5\" />\n"},
        {[](ModelOutFormat& mof) { mof.startValue("Key", "a=\"b\"").endValue(); }, "",
         "<Key a=\"b\" value=\"\" />\n", "<Key a=\"b\" value=\"\" />\n"},
        {[](ModelOutFormat& mof) { mof.startValueAsString("my \"key\"").endValue(); },
         "\n\"my \\\"key\\\"\" ", "<my \"key\" value=\"\" />\n", "<my \"key\" value=\"\" />\n"},
        {[](ModelOutFormat& mof) { mof.writeFooter(); }, "", "</VOXA>", "</VOXA>"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(written(ModelFormat::Text, row.writing), row.text);
        EXPECT_EQ(written(ModelFormat::Xml, row.writing), row.xml);
        EXPECT_EQ(written(ModelFormat::XmlV2, row.writing), row.xmlV2);
    }
}

TEST(ModelOutFormatTest, ClosingMoreElementsThanAreOpenWritesNothing) {
    EXPECT_EQ(
        written(ModelFormat::XmlV2, [](ModelOutFormat& mof) { mof.startBlock("A").endBlock().endBlock(); }),
        "<A>\n</A>\n");
}

TEST(ModelOutFormatTest, HeaderQuotesTheTitle) {
    auto const header = [](ModelOutFormat& mof) { mof.writeHeader("My \"model\""); };
    EXPECT_EQ(written(ModelFormat::Text, header), "\"My \\\"model\\\"\"\n");
    EXPECT_EQ(written(ModelFormat::Xml, header), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- XML v. 2 "
                                                 "-->\n<!-- \"My \\&quot;model\\&quot;\" -->\n"
                                                 "<!-- NEXT: XML Root Element -->\n<VOXA>\n");
    EXPECT_EQ(
        written(ModelFormat::XmlV2, header),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- XML v. 2 -->\n<!-- 'My \\&quot;model\\&quot;' -->\n"
        "<!-- NEXT: XML Root Element -->\n<VOXA>\n");
}

TEST(ModelOutFormatTest, HeaderWithVersionsNamesTheFormatAndInTextTheRootModel) {
    Version const versions = numbered(9);
    auto const full = [&](ModelOutFormat& mof) { mof.writeHeader("T", versions, true); };
    auto const brief = [&](ModelOutFormat& mof) { mof.writeHeader("T", versions, false); };
    EXPECT_EQ(written(ModelFormat::Text, full), "\"T\"\n\"WtLib\" 9.1.0.0\n\"Root\" 1.2.3.4.5");
    EXPECT_EQ(written(ModelFormat::Text, brief), "\"T\"\n\"WtLib\" 9.1.0.0");
    std::string const xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- XML v. 2 -->\n<!-- T -->\n"
                            "<!-- NEXT: Version Information -->\n<!-- 'WtLib' 9.1.0.0 -->\n<VOXA>\n";
    EXPECT_EQ(written(ModelFormat::XmlV2, full), xml);
    EXPECT_EQ(written(ModelFormat::XmlV2, brief), xml);
}

TEST(ModelOutFormatTest, TitleThatCannotStandInACommentIsQuoted) {
    std::pair<std::string, std::string> const titles[] = {
        {"a 'b' \"c\"", "a 'b' \"c\""}, {"'a", "'&apos;a'"}, {"\"a", "'\\&quot;a'"}, {"a\nb", "'a\\nb'"},
        {"a -->", "'a --&gt;'"},        {"", "''"},          {" a", "' a'"},         {"a - b", "a - b"},
    };
    Version const versions = numbered(9);
    for (auto const& [title, expected] : titles) {
        std::string const text = written(ModelFormat::XmlV2, [&, &title = title](ModelOutFormat& mof) {
            mof.writeHeader(title, versions, false);
        });
        EXPECT_NE(text.find("\n<!-- " + expected + " -->\n<!-- NEXT"), std::string::npos) << text;
    }
}

TEST(ModelOutFormatTest, EachNewlineFlushesTheStream) {
    CountingBuffer buffer;
    std::ostream out(&buffer);
    ModelOutFormat mof(out);
    mof.startBlock("A").startValue("Key");
    DataOutFormat<int>(mof.output(), ModelFormat::Text).put(1);
    mof.endValue().endBlock();
    EXPECT_EQ(buffer.str(), "\nA { \nKey 1\n}");
    EXPECT_EQ(buffer.syncs, 3);
}

TEST(ModelOutFormatTest, HeadersAndStringKeysSetThePrecision) {
    std::ostringstream out;
    ModelOutFormat mof(out);
    mof.writeHeader("x");
    EXPECT_EQ(out.precision(), 8);
    out.precision(3);
    mof.startValueAsString("x");
    EXPECT_EQ(out.precision(), 8);
}

TEST(ModelOutFormatTest, EntitiesReplaceTheReservedCharactersOnly) {
    std::ostringstream out;
    ModelOutFormat::encodeXMLEntities(out, "a\"&'<>\xE4\n&amp;");
    EXPECT_EQ(out.str(), "a&quot;&amp;&apos;&lt;&gt;\xE4\n&amp;amp;");
}

} // namespace Zorvan::AttributeContainer
