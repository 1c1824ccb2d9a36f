// SPDX-License-Identifier: MIT
#include "Program.h"

#include <AttributeContainer/AttrDefinition.h>
#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/WriteContextBase.h>

#include <set>

using namespace kxmodel_test;
using namespace Zorvan::AttributeContainer;

namespace {

std::string sample(std::string const& name) { return std::string(KX_SAMPLE_DATA_DIR) + "/" + name; }

class Convert : public Program {};

TEST_F(Convert, SampleDocumentsConvertIntoEachOther) {
    std::string const text = sample("world-110m.model");
    std::string const xml = sample("world-110m.model.xml");
    for (std::string const& in : {text, xml})
        for (std::string const& expected : {text, xml}) {
            SCOPED_TRACE(in + " to " + expected);
            Ending const result = run({"convert", in, path("out"), "--to", expected == xml ? "xml" : "text"});
            EXPECT_EQ(result.status, 0) << result.err;
            EXPECT_EQ(result.out + result.err, "");
            EXPECT_TRUE(contentOf(path("out")) == contentOf(expected));
        }
}

/// Attributes of every type, as the library writes them: with each of the values that is one of the type, and
/// without a value.
std::string attributesOfAllTypes() {
    // One a line.
    std::istringstream values(
        "true\n-128\n200\n-32768\n65535\n-2147483648\n4294967295\n-9223372036854775808\n"
        "18446744073709551615\n1234567.891\n2.2250738585072014e-308\n0 -1\n65535 0 1\n"
        "0.1 -1e300 3e-30\n-0.1 1.17549435e-38 3.40282347e38 4\n"
        "1 0 0 0  0 0.1 0 0  0 0 1 0  -4 0 0 1\n{ true false }\n{ 0 1 }\n{ -128 127 }\n{ }\n"
        "{ 0 255 65535 4294967295 18446744073709551615 }\n"
        "{ -9223372036854775808 -1e-10 }\n{ 1 2 3 4 5 6 7 8 9 10 11 65535 }\n"
        "{ 1 0 0 0  0 0.1 0 0  0 0 1 0  -4 0 0 1 }\n{ { 1 2 3 4 5 6 } { 7 8 9 } { } }\n"
        "970b1fae-00c4-5822-82d6-de95d462e519\n"
        "{ 970b1fae-00c4-5822-82d6-de95d462e519 00000000-0000-0000-0000-000000000000 }\n"
        "2 \"}\" \"a\"\n1 \"=>\"=>\"\"\n\"}\"");
    std::set<std::string> types;
    std::string content;
    for (std::string value; std::getline(values, value);)
        for (std::uint32_t type = 0; type < AttrTypeUnknown; ++type) {
            auto const made = AttrDefinition{0, "", static_cast<AttrType>(type)}.createAttr(
                CreateType::Blank, std::nullopt, std::nullopt);
            std::istringstream in(value);
            if (made)
                made->readValueFrom(in, std::make_shared<ReadContextBase>());
            if (!made || in.fail() || !(in >> std::ws).eof())
                continue;
            std::string const shortType = made->getClassName().substr(5, made->getClassName().size() - 6);
            if (types.insert(shortType).second)
                content += attribute(shortType, "initial." + shortType, "", "\nWrite 1");
            std::ostringstream written;
            EXPECT_FALSE(made->writeTo(written, std::make_shared<WriteContextBase>()));
            content += attribute(shortType, "a" + std::to_string(content.size()), "", written.str());
        }
    EXPECT_EQ(types.size(), 48u);
    return content;
}

TEST_F(Convert, ValuesThatAreHardToCarryAreKept) {
    std::string content = attributesOfAllTypes();
    int count = 0;
    std::istringstream texts(
        "| |quote \\\" and backslash \\\\|\\\\\\\"|apostrophe '|{|}|} }\\n}|a\\nb\\r\\nc|tab\there|"
        "<b>&amp;</b>|&lt;|]]> -->|/>\\\"|value=\\\"|\\uFFC3\\uFFA9 \\uFFE2\\uFF82\\uFFAC \\uFFFF|\\\\uFFC3|"
        "\\\\n|Child|AttrContainer {|InstanceID 5|=>|''|\x01\x1f\x7f|trailing blank ");
    for (std::string text; std::getline(texts, text, '|');) {
        std::string const number = std::to_string(++count), quoted = '"' + text + '"';
        content += attribute("String", "s" + number, text.empty() ? "" : quoted) +
                   attribute("StringArray", "a" + number, "2 " + quoted + " " + quoted) +
                   attribute("StringMap", "m" + number, "1 " + quoted + "=>" + quoted);
    }
    std::string const text = header + container("root", content), xml = converted(text, "xml");
    expectSame(converted(text, "text"), text);
    expectSame(converted(xml, "xml"), xml);
    expectSame(converted(xml, "text"), text);
}

} // namespace
