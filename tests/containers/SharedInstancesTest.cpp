// SPDX-License-Identifier: MIT
#include "DocumentFixture.h"

namespace Zorvan::AttributeContainer::Testing {

TEST(SharedInstancesTest, SecondOccurrenceIsWrittenAndReadAsAReference) {
    for (auto const format : {TEXT, XML}) {
        auto const root = Object::create();
        auto const child = Object::create();
        auto const shared = AttrContainer::create();
        root->addChild(child, 0);
        ASSERT_TRUE(root->addField(shared, "a", 0) && root->addField(shared, "b", 4) &&
                    child->addField(shared, "c", 0));
        auto const writer = std::make_shared<SharingWriter>(format);
        std::string const document = write(*root, writer);
        std::vector<std::uint64_t> ids;
        writer->instances.copyToVector(ids);
        EXPECT_EQ(ids, std::vector<std::uint64_t>{shared->getInstanceIdentifier()});

        auto const reader = std::make_shared<SharingReader>(format, ids);
        auto const again = Object::create();
        EXPECT_EQ(verdict(read(*again, document, reader)), "ok");
        auto const a = again->getField("a").lock();
        EXPECT_TRUE(a && a == again->getField("b").lock());
        EXPECT_EQ(again->children().getChild(0)->getField("c").lock(), a);
        // The flags stay: without clearing them, a second write has references
        // only.
        auto const isWhole = [&] { return write(*root, writer) == document; };
        EXPECT_FALSE(isWhole());
        shared->setIsSerialized(false);
        child->setIsSerialized(false);
        EXPECT_TRUE(isWhole());
    }
}

TEST(SharedInstancesTest, ReferencesResolveOrAreReported) {
    std::string const seven = "InstanceID 7\n", reference = seven + "ReferenceToShared\n";
    auto const inner = [](std::string const& name, std::string const& entries) {
        return field("AttrContainer", name, entries);
    };
    auto const makeReader = [](ModelFormat::Format format) {
        return std::make_shared<SharingReader>(format, std::vector<std::uint64_t>{7});
    };
    expectRead<Object>(documentCases("references.txt"), makeReader);
    // An ancestor resolves.
    auto const root = Object::create();
    std::string const middle = inner("m", part("m", inner("up", reference)));
    EXPECT_EQ(verdict(read(*root, part("r", inner("a", seven + part("x", middle))), makeReader(TEXT))), "ok");
    auto const a = root->getField("a").lock();
    EXPECT_EQ(a->getField("m").lock()->getField("up").lock(), a);
    a->rmField("m"); // A cycle keeps itself alive.
}

TEST(SharedInstancesTest, AncestorIsNamedAndNotEnteredAgain) {
    auto const root = AttrContainer::create();
    auto const below = AttrContainer::create();
    ASSERT_TRUE(root->addField(below, "f", 0) && below->addField(root, "up", 0));
    for (auto const format : {TEXT, XML}) {
        auto const again = AttrContainer::create();
        EXPECT_EQ(verdict(read(*again, write(*root, format), format)), "ok");
        EXPECT_EQ(outline(*again), "AttrContainer AttrContainer{}[f:AttrContainer "
                                   "AttrContainer{}[up:AttrContainer AttrContainer{}]]");
    }
    below->rmField("up");
}

} // namespace Zorvan::AttributeContainer::Testing
