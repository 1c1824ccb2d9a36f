// SPDX-License-Identifier: MIT
#include <AttributeContainer/AttrList.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <gtest/gtest.h>

using namespace Zorvan::AttributeContainer;

namespace {

constexpr std::uint64_t noToken = Zorvan::DataStructures::KeyTable::noToken;

TEST(CustAttrListTest, NamesMeanTheirLowestTokenAndReplacingRenamesTheSlot) {
    CustAttrList list(5);
    std::vector<std::shared_ptr<Attribute>> attributes;
    for (char const* name : {"same", "same", "same", ""}) {
        attributes.push_back(std::make_shared<CustAttr<int>>(0));
        EXPECT_FALSE(list.addElement(attributes.back(), name).expired());
    }
    EXPECT_FALSE(list.rmElement(4, true)) << "below the first token";
    EXPECT_FALSE(list.rmElement(9, true));
    EXPECT_EQ(5U, list.getToken("same"));
    EXPECT_EQ(std::nullopt, list.getElementName(8)) << "an empty name is none";
    EXPECT_TRUE(list.setElement(5, attributes[0], "other"));
    EXPECT_EQ(6U, list.getToken("same"));
    EXPECT_EQ(5U, list.getToken("other"));
    EXPECT_EQ(4U, list.size());
    EXPECT_TRUE(list.rmElement(6, true));
    EXPECT_EQ(7U, list.getToken("same"));
    EXPECT_EQ(attributes[3], list.getElement(6));
    EXPECT_EQ(6U, list.getToken(*attributes[3]));
    EXPECT_FALSE(list.setElement(8, attributes[0], "other"));
    std::shared_ptr<Attribute const> byIdentity = attributes[3];
    EXPECT_TRUE(list.rmElement(byIdentity, true));
    EXPECT_FALSE(list.rmElement(byIdentity, true));
    EXPECT_EQ(2U, list.size());
    EXPECT_EQ(noToken, list.getToken(*byIdentity));
}

TEST(FieldListTest, SlotsBelowTheMinimumCapacityStay) {
    FieldList list(0);
    EXPECT_TRUE(list.setMinCapacity(3));
    EXPECT_EQ(3U, list.size());
    auto const declared = AttrContainer::create();
    EXPECT_TRUE(list.setElement(1, declared, "not kept"));
    EXPECT_EQ(noToken, list.getToken("not kept"));
    EXPECT_EQ(1U, list.getToken(*declared));
    EXPECT_TRUE(list.rmElement(1, true));
    EXPECT_EQ(3U, list.size());
    EXPECT_EQ(nullptr, list.getElement(1));

    std::vector<std::shared_ptr<AttrContainer>> custom;
    for (char const* name : {"a", "b", "c"}) {
        custom.push_back(AttrContainer::create());
        EXPECT_TRUE(list.addElement(custom.back(), name));
    }
    EXPECT_FALSE(list.setElement(6, declared));
    EXPECT_TRUE(list.rmElement(9, true)) << "there is nothing to remove";
    EXPECT_TRUE(list.rmElement(custom[0], true));
    EXPECT_EQ(3U, list.getToken("c"));
    EXPECT_EQ(4U, list.getToken("b"));
    EXPECT_TRUE(list.replaceField(custom[2], declared));
    EXPECT_EQ("c", list.getElementName(list.getToken(*declared)));
    EXPECT_TRUE(list.setMinCapacity(5));
    EXPECT_EQ(noToken, list.getToken("c")) << "declared slots are not found through the list";
}

// The same field may be in several slots; in short lists and in those long
// enough for an index.
TEST(FieldListTest, AFieldInSeveralSlotsIsFoundInTheLowest) {
    for (std::uint64_t size : {8U, 100U}) {
        FieldList list(0);
        auto const shared = AttrContainer::create();
        for (std::uint64_t i = 0; i < size; ++i)
            list.addElement(i % 3 == 1 ? shared : AttrContainer::create(), "f" + std::to_string(i));
        EXPECT_EQ(1U, list.getToken(*shared));
        list.setElement(1, AttrContainer::create());
        EXPECT_EQ(4U, list.getToken(*shared));
        list.setElement(0, shared);
        EXPECT_EQ(0U, list.getToken(*shared));
        for (std::uint64_t lowest = 0; list.getToken(*shared) != noToken; ++lowest) {
            EXPECT_LE(lowest, size);
            EXPECT_EQ(shared, list.getElement(list.getToken(*shared)));
            for (std::uint64_t token = 0; token < list.getToken(*shared); ++token)
                EXPECT_NE(shared, list.getElement(token));
            list.rmElement(shared, true);
        }
    }
}

} // namespace
