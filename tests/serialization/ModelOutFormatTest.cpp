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

// Filled while the static objects of this file are initialised.
std::string const seenByStaticInitialiser = ModelFormat::XML_HEADER + ModelFormat::XML_FOOTER;

using Writing = std::function<void(ModelOutFormat&)>;

std::string written(ModelFormat::Format format, Writing const& writing) {
    std::ostringstream out;
    WriteToScope scope(out, std::make_shared<WriteContextBase>(format));
    writing(scope.getMof());
    return out.str();
}

Version const numbered({}, VersionNum("WtLib", 9, 1, 0, 0, 0, ""), {}, {},
                       VersionNum("Root", 1, 2, 3, 4, 5, ""), "");

/// Has room for a number of characters, which it passes on when it is full or flushed.
class PassingBuffer : public std::streambuf {
public:
    explicit PassingBuffer(std::size_t room) : room_(room, ' ') { clear(); }

    std::string text;
    int syncs = 0;

protected:
    int_type overflow(int_type c) override {
        clear();
        if (c != traits_type::eof())
            text.push_back(traits_type::to_char_type(c));
        return traits_type::not_eof(c);
    }
    int sync() override {
        clear();
        ++syncs;
        return 0;
    }

private:
    void clear() {
        text.append(pbase(), pptr());
        setp(room_.data(), room_.data() + room_.size());
    }

    std::string room_;
};

} // namespace

TEST(ModelOutFormatTest, OperationsWriteTheirTextInEachRendering) {
    using Mof = ModelOutFormat;
    using Row = std::tuple<Writing, std::string, std::string>;
    for (auto const& [writing, text, xml] :
         {Row{[](Mof& mof) { mof.startBlock("A").endBlock().startBlock("B", "x=\"1\""); }, "\nA { \n}",
              "<A>\n</A>\n<B x=\"1\">\n"},
          Row{[](Mof& mof) { mof.startAttributeBlock("Attr<A<B>"); }, "\nAttr<A<B> { ",
              "<Attr type=\"B\">\n"},
          Row{[](Mof& mof) { mof.startBlockWithSize("Items", 3, false).endBlock(); }, "\nItems {  3\n}",
              "<Items value=\"3\">\n</Items>\n"},
          Row{[](Mof& mof) { mof.startBlockWithSize("Items", 12345678901234567890U, true); },
              "\nItems 12345678901234567890 { ", "<Items value=\"12345678901234567890\">\n"},
          Row{[](Mof& mof) { mof.startValue("Key").endValue(); }, "\nKey ", "<Key value=\"\" />\n"},
          Row{[](Mof& mof) { mof.startValue("Key", "a=\"b\"").endValue(); }, "",
              "<Key a=\"b\" value=\"\" />\n"},
          Row{[](Mof& mof) { mof.startValueAsString("my \"key\"").endValue(); }, "\n\"my \\\"key\\\"\" ",
              "<my \"key\" value=\"\" />\n"},
          Row{[](Mof& mof) { mof.writeFooter(); }, "", "</VOXA>"}}) {
        EXPECT_EQ(written(ModelFormat::Text, writing), text);
        EXPECT_EQ(written(ModelFormat::XmlV2, writing), xml);
        // The older rendering has no line feed behind the attributes of a block.
        bool const isShorter = xml.ends_with("<B x=\"1\">\n");
        EXPECT_EQ(written(ModelFormat::Xml, writing) + (isShorter ? "\n" : ""), xml);
    }
    EXPECT_EQ(written(ModelFormat::XmlV2, [](Mof& mof) { mof.startBlock("A").endBlock().endBlock(); }),
              "<A>\n</A>\n")
        << "more ends than there are elements";
}

TEST(ModelOutFormatTest, HeadersStandAtTheStart) {
    std::string const start = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- XML v. 2 -->\n";
    std::string const root = " -->\n<!-- NEXT: XML Root Element -->\n<VOXA>\n";
    Writing const header = [](ModelOutFormat& mof) { mof.writeHeader("My \"model\""); };
    EXPECT_EQ(written(ModelFormat::Text, header), "\"My \\\"model\\\"\"\n");
    EXPECT_EQ(written(ModelFormat::Xml, header), start + "<!-- \"My \\&quot;model\\&quot;\"" + root);
    EXPECT_EQ(written(ModelFormat::XmlV2, header), start + "<!-- 'My \\&quot;model\\&quot;'" + root);
    EXPECT_EQ(seenByStaticInitialiser, "<?xml version=\"1.0\" encoding=\"UTF-8\"?></VOXA>");
    Writing const quoted = [](ModelOutFormat& mof) { mof.writeHeader("a -->", numbered, false); };
    EXPECT_TRUE(written(ModelFormat::XmlV2, quoted).starts_with(start + "<!-- 'a --&gt;' -->\n<!-- NEXT"));
    for (bool const withRootModel : {false, true}) {
        Writing const full = [&](ModelOutFormat& mof) { mof.writeHeader("T", numbered, withRootModel); };
        EXPECT_EQ(written(ModelFormat::Text, full),
                  std::string("\"T\"\n\"WtLib\" 9.1.0.0") + (withRootModel ? "\n\"Root\" 1.2.3.4.5" : ""));
        EXPECT_EQ(written(ModelFormat::XmlV2, full),
                  start +
                      "<!-- T -->\n<!-- NEXT: Version Information -->\n<!-- 'WtLib' 9.1.0.0 -->\n<VOXA>\n");
    }
}

TEST(ModelOutFormatTest, EachNewlineFlushesTheStreamWhateverRoomItHas) {
    std::string const key(300, 'k');
    for (std::size_t const room : {0, 1, 100, 290, 320, 10000}) {
        PassingBuffer buffer(room);
        std::ostream out(&buffer);
        ModelOutFormat mof(out);
        mof.startBlock("A").startValue(key);
        DataOutFormat<int>(mof.output(), ModelFormat::Text).put(1);
        mof.endValue().endBlock().writeHeader("T", numbered, true).startBlock("B");
        EXPECT_EQ(buffer.syncs, 6);
        out.flush();
        EXPECT_EQ(buffer.text, "\nA { \n" + key + " 1\n}\"T\"\n\"WtLib\" 9.1.0.0\n\"Root\" 1.2.3.4.5\nB { ");
    }
}

TEST(ModelOutFormatTest, EntitiesReplaceReservedCharactersAndHeadersAndKeysSetThePrecision) {
    std::ostringstream out;
    ModelOutFormat::encodeXMLEntities(out, "a\"&'<>\xE4\n&amp;");
    EXPECT_EQ(out.str(), "a&quot;&amp;&apos;&lt;&gt;\xE4\n&amp;amp;");
    ModelOutFormat(out).writeHeader("x");
    EXPECT_EQ(out.precision(), 8);
    out.precision(3);
    ModelOutFormat(out).startValueAsString("x");
    EXPECT_EQ(out.precision(), 8);
}

} // namespace Zorvan::AttributeContainer
