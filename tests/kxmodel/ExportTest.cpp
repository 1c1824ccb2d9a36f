// SPDX-License-Identifier: MIT
#include "Program.h"

#include <AttributeContainer/Object.h>
#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/XMLSerialization.h>

using namespace kxmodel_test;
using namespace Zorvan::AttributeContainer;

namespace {

class Export : public Program {};

TEST_F(Export, PlainExportIsTheLibrarysAndChildrenAreNested) {
    auto const made = [](std::string const& name) {
        auto result = Object::create();
        EXPECT_FALSE(result->setName(name, 0));
        return result;
    };
    auto const root = made("root"), child = made("A"), grandchild = made("B"), field = made("f"),
               inField = made("g");
    root->addAttribute(std::make_shared<CustAttr<std::string>>("x & <y> \"z\"\n"), "text");
    root->addField(field, "f", 0);
    field->addChild(inField, 0);
    child->addChild(grandchild, 0);
    root->addChild(child, 0);
    std::ostringstream text, plain;
    ASSERT_FALSE(root->writeTo(text, std::make_shared<WriteContextBase>()));
    ASSERT_FALSE(XMLSerialization::to(plain, *root, std::make_shared<WriteContextBase>()));

    Ending const result = run({"export", "-", "-"}, text.str());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    expectSame(result.out, plain.str());

    // What stands between the tags of "children" is what is new, in the form of the rest.
    std::string nested = run({"export", "-", "-", "--children"}, text.str()).out;
    std::string const begin = "<children>\n", end = "</children>\n";
    std::string children;
    for (std::size_t at = 0; (at = nested.find(begin)) != nested.npos;) {
        // Those of the field come first, then those of the root with the grandchild's in them.
        std::size_t depth = 1, next = at + begin.size();
        while (depth != 0) {
            std::size_t const stop = nested.find(end, next), start = nested.find(begin, next);
            depth += start < stop ? 1 : -1;
            next = std::min(start, stop) + (start < stop ? begin : end).size();
        }
        children += nested.substr(at, next - at);
        nested.erase(at, next - at);
    }
    expectSame(nested, plain.str());
    for (std::string const part :
         {"<g type=\"Object\"><fields>\n</fields>\n<attrs>\n<Name type=\"String\">\"g\"</Name>",
          "<A type=\"Object\"><fields>", "</attrs>\n<children>\n<B type=\"Object\"><fields>",
          "</attrs>\n<children>\n</children>\n</B>\n</children>\n</A>\n</children>\n"})
        EXPECT_NE(children.find(part), std::string::npos) << part << " in\n" << children;
}

TEST_F(Export, WhatIsNoXmlIsWarnedOf) {
    std::string const odd =
        attribute("String", "s", "\"a\x01\"") + field("AttrContainer", "f<1", container("f\xc3\xa9"));
    std::string text = object("1st", odd);
    for (int i = 0; i < 30; ++i)
        text += child("Object", "-", object("-"));
    std::string const in = put("in.model", text), out = path("out.xml");
    std::string const warnings = in + ": warning: /: \"1st\" is no XML name\n" + in +
                                 ": warning: /s: the value holds a control character that XML forbids\n" +
                                 in +
                                 ": warning: /f<1: the name of the field is no value of an XML attribute\n";
    Ending const result = run({"export", in, out});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, warnings);
    EXPECT_TRUE(contentOf(out).ends_with("</Root>"));

    Ending const all = run({"export", in, out, "--children"});
    EXPECT_EQ(all.status, 0);
    EXPECT_TRUE(all.err.starts_with(warnings + in + ": warning: /-: \"-\"")) << all.err;
    EXPECT_TRUE(all.err.ends_with(in + ": warning: and 13 more\n")) << all.err;
}

} // namespace
