// SPDX-License-Identifier: MIT
#include "DocumentFixture.h"

#include <AttributeContainer/UnknownAttrContainer.h>

#include <gtest/gtest.h>

#include <vector>

namespace Zorvan::AttributeContainer::Testing {

namespace {

std::string const PART =
    block("AttrContainer", attr("String", "Name", "Value \"u\"\n") + attr("int", "a b", "Value 5\n"));

std::string document(std::string const& entries) {
    return block("AttrContainer", member("SubContainer", "None", "u", entries));
}

} // namespace

TEST(UnknownAttrContainerTest, EverythingIsKeptAndWrittenBackInBothRenderings) {
    struct Row {
        std::string entries, tree;
    };
    std::string const behind = member("Child", "X", "y", "Foo \"}\"\n") + "Bar 1\n";
    std::vector<Row> const rows = {
        {PART, "u{a b=5}"},
        {"MajorVersion 3\n" + PART + behind, "u{a b=5}"},
        {attr("int", "n", "Value 5\n") + behind, "u{n=5}"},
        {block("AttrContainer", member("SubContainer", "Some", "f", PART + behind)),
         "u{}[f:UnknownAttrContainer u{a b=5}]"},
        {"", "u{}"},
        {"Foo 1\n" + behind, "u{}"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.entries);
        auto const root = AttrContainer::create();
        EXPECT_EQ(verdict(read(*root, document(row.entries))), "ok");
        std::string const tree = "AttrContainer AttrContainer{}[u:UnknownAttrContainer " + row.tree + "]";
        EXPECT_EQ(outline(*root), tree);
        std::string const text = write(*root);
        std::string const xml = write(*root, XML);
        EXPECT_EQ(text.find("AttrContainer {", 30) != std::string::npos, row.tree != "u{}") << text;
        for (auto const format : {TEXT, XML}) {
            auto const again = AttrContainer::create();
            EXPECT_EQ(verdict(read(*again, format == TEXT ? text : xml, format)), "ok");
            EXPECT_EQ(outline(*again), tree);
            EXPECT_EQ(write(*again), text);
            EXPECT_EQ(write(*again, XML), xml);
            EXPECT_EQ(write(*again->duplicate(CreateType::Deep)), text);
        }
    }
}

TEST(UnknownAttrContainerTest, UnknownPartsOfTheContainerPartAreReported) {
    auto const root = AttrContainer::create();
    EXPECT_EQ(verdict(read(*root, document(block("AttrContainer", "Foo 1\n")))),
              "UnknownContent(UnknownContent(UnknownContent(UnknownKeyword)))");
}

TEST(UnknownAttrContainerTest, FieldOfAnyClassIsAnotherUnknownContainer) {
    auto const container = UnknownAttrContainer::create();
    std::uint64_t token = 7;
    auto const field =
        std::dynamic_pointer_cast<UnknownAttrContainer>(container->checkCreateChildField("T", "N", &token));
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->getTypeName() + field->name() + field->getClassName(), "TNUnknownAttrContainer");
    EXPECT_EQ(token, 7u);
    field->setTypeName("no name");
    ASSERT_TRUE(container->addField(field, "N", 0));
    EXPECT_EQ(write(*container, XML), "StreamFailure");
    EXPECT_NE(write(*container).find("\"no name\" \"N\""), std::string::npos);
}

TEST(UnknownAttrContainerTest, ItIsARootToo) {
    for (auto const& [text, expected] :
         std::vector<std::pair<std::string, std::string>>{{"Foo 1\n" + PART + "Bar 1\n", "ok"},
                                                          {"Foo 1\n", "ok"},
                                                          {PART + "Ba", "StreamFailure"},
                                                          {PART + "Bar {", "StreamFailure"},
                                                          {"", "StreamFailure"}}) {
        auto const root = UnknownAttrContainer::create();
        EXPECT_EQ(verdict(read(*root, text)), expected) << text;
    }
    // A block that held nothing gets a container part with its first member.
    auto const root = AttrContainer::create();
    static_cast<void>(read(*root, document("")));
    root->getField("u").lock()->addField(AttrContainer::create(), "f", 0);
    EXPECT_NE(write(*root).find("\"f\""), std::string::npos);
}

} // namespace Zorvan::AttributeContainer::Testing
