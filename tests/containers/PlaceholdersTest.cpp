// SPDX-License-Identifier: MIT
#include "DocumentFixture.h"

namespace Zorvan::AttributeContainer::Testing {

namespace {

std::string const PART = part("u");

std::string ofUnknownObject(std::string const& entries) { return child("None", "u", entries); }

std::shared_ptr<FallbackObject> placeholderIn(Object const& root) {
    return std::dynamic_pointer_cast<FallbackObject>(root.children().getChild(0));
}

} // namespace

TEST(FallbackObjectTest, ContentIsParsedOrKeptAndIsWrittenBackInBothRenderings) {
    for (DocumentCase const& one : documentCases("fallback-objects.txt")) {
        std::string const header = one.texts[0], body = one.texts[1], behind = one.texts[2];
        std::string const entries = header + body + behind;
        bool const isParsed = !one.tree.empty();
        SCOPED_TRACE(one.place);
        auto const root = Object::create();
        std::string const expected = entries.empty() ? "UnknownClass" : "UnknownClass(ContentSkipped";
        EXPECT_EQ(verdict(read(*root, ofUnknownObject(entries))).substr(0, expected.size()), expected);
        auto const placeholder = placeholderIn(*root);
        ASSERT_NE(placeholder, nullptr);
        EXPECT_EQ(placeholder->getHeaderText(), header);
        EXPECT_EQ(placeholder->getBodyText(), isParsed ? "" : body + behind);
        EXPECT_EQ(placeholder->isBodyParsed(), isParsed);
        EXPECT_EQ(placeholder->hasNothingPreserved(), entries.empty());
        EXPECT_EQ(outline(*placeholder), "FallbackObject u" + (isParsed ? one.tree : "{}"));
        expectStable(*root, expected);

        auto const copy = std::dynamic_pointer_cast<FallbackObject>(placeholder->duplicate(CreateType::Deep));
        auto const blank = std::dynamic_pointer_cast<FallbackObject>(copy->duplicate(CreateType::Blank));
        EXPECT_EQ(blank->getFallbackClassName(), "None");
        EXPECT_TRUE(blank->hasNothingPreserved());
        if (behind.empty() || !isParsed) { // Copies have no children.
            auto const other = Object::create();
            ASSERT_TRUE(other->addChild(copy, 4));
            EXPECT_EQ(write(*other), write(*root));
        }
    }
}

TEST(FallbackObjectTest, BlockIsReadFromBehindItsBraceToItsEnd) {
    auto const placeholder = FallbackObject::create();
    std::istringstream in("Foo 1\n" + PART + "}\nNext 1\n"), cut("Foo 1\n" + PART);
    {
        ReadFromScope scope(in, readContext(TEXT));
        EXPECT_EQ(verdict(placeholder->readFrom(in, readContext(TEXT))), "ContentSkipped");
        EXPECT_EQ(scope.getImf().getKeyword(), "}");
        scope.getImf().nextKeyword();
        EXPECT_EQ(scope.getImf().getKeyword(), "Next");
    }
    EXPECT_EQ(verdict(placeholder->readFrom(cut, readContext(TEXT))), "StreamFailure");
}

TEST(FallbackObjectTest, PlaceholdersInOneAnotherKeepTheirTextFromTheSixteenthOn) {
    std::string text =
        block("AttrContainer", attr("int", "n", link("PreObserver", "a", "Action \"None\"\nFoo 1\n")));
    for (int depth = 0; depth < 40; ++depth)
        text = PART + ofUnknownObject(text);
    auto const root = Object::create();
    static_cast<void>(read(*root, text));
    int numParsed = 0;
    std::shared_ptr<FallbackObject> placeholder = placeholderIn(*root);
    for (; placeholder && placeholder->isBodyParsed(); placeholder = placeholderIn(*placeholder))
        ++numParsed;
    EXPECT_EQ(numParsed, 16);
    auto const again = Object::create();
    static_cast<void>(read(*again, write(*root)));
    EXPECT_EQ(write(*again), write(*root));
}

TEST(UnknownAttrContainerTest, EverythingIsKeptAndWrittenBackInBothRenderings) {
    for (DocumentCase const& one : documentCases("unknown-containers.txt")) {
        SCOPED_TRACE(one.place);
        auto const root = AttrContainer::create();
        EXPECT_EQ(verdict(read(*root, block("AttrContainer", field("None", "u", one.texts[0])))), "ok");
        EXPECT_EQ(outline(*root), "AttrContainer AttrContainer{}[u:UnknownAttrContainer " + one.tree + "]");
        std::string const text = write(*root);
        EXPECT_EQ(text.find("AttrContainer {", 30) != std::string::npos, one.tree != "u{}") << text;
        EXPECT_EQ(write(*root->duplicate(CreateType::Deep)), text);
        expectStable(*root, "ok");
        // A block that held nothing gets a container part with its first member.
        root->getField("u").lock()->addField(AttrContainer::create(), "g", 0);
        EXPECT_NE(write(*root).find("\"g\""), std::string::npos);
    }
}

TEST(UnknownAttrContainerTest, WhatHappensToOneWithoutAContainerPartIsWritten) {
    std::string const text = block("AttrContainer", field("AttrContainer", "watcher", part("watcher")) +
                                                        field("None", "u", "Foo 1\n"));
    std::vector<std::tuple<char const*, void (*)(AttrContainer&), bool>> const rows{
        {"nothing", [](AttrContainer&) {}, false},
        {"renamed", [](AttrContainer& u) { u.name("v"); }, true},
        {"observed", [](AttrContainer& u) { u.observable()->addObserver("watcher", 3, 0, false); }, true},
        {"its name observed", [](AttrContainer& u) { u.Attr_name().addObserver("watcher", 3, 0, false); },
         true}};
    for (auto const& [title, change, isKept] : rows) {
        SCOPED_TRACE(title);
        auto const root = AttrContainer::create();
        ASSERT_EQ(verdict(read(*root, text)), "ok");
        auto const placeholder = root->getField(1).lock();
        change(*placeholder);
        std::string const written = write(*root);
        EXPECT_EQ(written.find("Foo 1\nAttrContainer") != std::string::npos, isKept) << written;
        EXPECT_EQ(write(*root->duplicate(CreateType::Deep)), written);
        auto const again = AttrContainer::create();
        ASSERT_EQ(verdict(read(*again, written)), "ok");
        auto const restored = again->getField(1).lock();
        EXPECT_EQ(restored->name(), placeholder->name());
        EXPECT_EQ(restored->observable()->getNumPostPaths(), placeholder->observable()->getNumPostPaths());
        EXPECT_EQ(restored->Attr_name().getNumPostPaths(), placeholder->Attr_name().getNumPostPaths());
        EXPECT_EQ(write(*again), written);
    }
}

TEST(UnknownAttrContainerTest, IsARootTooAndItsFieldsOfAnyClassAreSuchContainers) {
    auto const container = UnknownAttrContainer::create();
    EXPECT_EQ(verdict(read(*container, "Foo 1\n" + PART + "Bar 1\n")), "ok");
    EXPECT_EQ(verdict(read(*container, PART + "Bar {")), "StreamFailure");
    std::uint64_t token = 7;
    auto const made =
        std::dynamic_pointer_cast<UnknownAttrContainer>(container->checkCreateChildField("T", "N", &token));
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->getTypeName() + made->name() + made->getClassName(), "TNUnknownAttrContainer");
    EXPECT_EQ(token, 7u);
    made->setTypeName("no name");
    ASSERT_TRUE(container->addField(made, "N", 0));
    EXPECT_EQ(write(*container, XML), "StreamFailure");
    EXPECT_NE(write(*container).find("\"no name\" \"N\""), std::string::npos);
}

} // namespace Zorvan::AttributeContainer::Testing
