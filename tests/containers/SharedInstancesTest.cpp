// SPDX-License-Identifier: MIT
#include "DocumentFixture.h"

#include <AttributeContainer/ReferenceDictionary.h>
#include <AttributeContainer/SharedInstanceCollection.h>

#include <gtest/gtest.h>

namespace Zorvan::AttributeContainer::Testing {

namespace {

class SharingWriter : public WriteContextBase {
public:
    using WriteContextBase::WriteContextBase;
    SharedInstanceCollection* getSharedInstances() const override { return &instances; }
    mutable SharedInstanceCollection instances;
};

class SharingReader : public ReadContextBase {
public:
    explicit SharingReader(std::vector<std::uint64_t> ids) { dictionary.initializeFromVector(ids); }
    ReferenceDictionary* getReferenceDictionary() const override { return &dictionary; }
    mutable ReferenceDictionary dictionary;
};

} // namespace

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

        auto const reader = std::make_shared<SharingReader>(ids);
        reader->setFormat(format);
        auto const again = Object::create();
        EXPECT_EQ(verdict(read(*again, document, reader)), "ok");
        auto const a = again->getField("a").lock();
        EXPECT_NE(a, nullptr);
        EXPECT_EQ(again->getField("b").lock(), a);
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
    std::string const reference = "InstanceID 7\nReferenceToShared\n";
    auto const inner = [](std::string const& name, std::string const& entries) {
        return field("AttrContainer", name, entries);
    };
    std::vector<DocumentRow> const rows = {
        {part("r", inner("a", "InstanceID 7\n" + part("x")) + inner("b", reference) + inner("b", reference)),
         "ok", "[a:7][b:7][b:7]"},
        // An ancestor resolves; no container is a field of itself.
        {part("r", inner("a", "InstanceID 7\n" + part("x", inner("m", part("m", inner("up", reference)))))),
         "ok", "[a:7]"},
        {part("r", inner("a", "InstanceID 7\n" + part("x", inner("up", reference)))), "ContentSkipped",
         "[a:7]"},
        {part("r", inner("b", "InstanceID 8\nReferenceToShared\n")), "ContentSkipped", ""},
        {part("r", inner("b", "ReferenceToShared\n")), "ok", ""},
        {part("r", inner("a", "FieldToken 0\n" + part("x")) + inner("b", "FieldToken 0\n" + part("y"))), "ok",
         "[a:?]"},
        {part("r") + child("Object", "a", "InstanceID 7\n") + child("Object", "b", reference),
         "ContentSkipped", "(7)"},
        {part("r") + child("Object", "b", "ReferenceToShared\n"), "TargetMissing", ""},
        {part("r", field("Object", "a", "InstanceID 7\n")) + child("Object", "b", reference), "ok",
         "[a:7](7)"},
    };
    for (DocumentRow const& row : rows)
        for (auto const format : {TEXT, XML}) {
            SCOPED_TRACE(row.text);
            auto const reader = std::make_shared<SharingReader>(std::vector<std::uint64_t>{7});
            reader->setFormat(format);
            auto const root = Object::create();
            EXPECT_EQ(verdict(read(*root, format == TEXT ? row.text : xmlOf(row.text), reader)), row.verdict);
            auto const seven = reader->dictionary.resolveReference(7);
            std::string tree;
            for (std::uint64_t i = 0; i < root->getNumFields(); ++i)
                tree += "[" + *root->getFieldName(i) + (root->getField(i).lock() == seven ? ":7]" : ":?]");
            for (std::uint64_t i = 0; i < root->children().getNumChildren(); ++i)
                tree += root->children().getChild(i) == seven ? "(7)" : "";
            EXPECT_EQ(tree, row.tree);
            if (auto const middle = seven ? seven->getField("m").lock() : nullptr) {
                EXPECT_EQ(middle->getField("up").lock(), seven);
            }
            if (seven)
                seven->rmField("m"); // A cycle keeps itself alive.
        }
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
