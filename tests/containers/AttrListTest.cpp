// SPDX-License-Identifier: MIT
#include "containers/ApplicationClasses.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

TEST(CustAttrListTest, ReplacingRenamesTheSlotAndRemovingMovesTheLastOne) {
    CustAttrList list(5);
    std::vector<std::shared_ptr<Attribute>> attributes;
    for (char const* name : {"same", "same", "same", ""}) {
        attributes.push_back(std::make_shared<CustAttr<int>>(0));
        EXPECT_FALSE(list.addElement(attributes.back(), name).expired());
    }
    EXPECT_FALSE(list.rmElement(4, true) || list.rmElement(9, true)) << "outside of the list";
    EXPECT_EQ(5U, list.getToken("same"));
    EXPECT_EQ(std::nullopt, list.getElementName(8)) << "an empty name is none";
    EXPECT_TRUE(list.setElement(5, attributes[0], "other"));
    EXPECT_FALSE(list.setElement(9, attributes[0], "other"));
    EXPECT_TRUE(list.getToken("same") == 6 && list.getToken("other") == 5);
    EXPECT_TRUE(list.rmElement(6, true));
    EXPECT_EQ(7U, list.getToken("same"));
    EXPECT_EQ(6U, list.getToken(*attributes[3]));
    std::shared_ptr<Attribute const> byIdentity = attributes[3];
    EXPECT_TRUE(list.rmElement(byIdentity, true));
    EXPECT_FALSE(list.rmElement(byIdentity, true));
    EXPECT_EQ(2U, list.size());
    EXPECT_EQ(noToken, list.getToken(*byIdentity));
}

TEST(GenAttrListTest, HasElementsWithoutNames) {
    GenAttrList<Attribute> list(5);
    std::vector<std::shared_ptr<Attribute>> elements;
    for (int i = 0; i < 20; ++i) { // long enough for an index
        elements.push_back(std::make_shared<CustAttr<int>>(i));
        EXPECT_EQ(elements.back(), list.addElement(elements.back(), "ignored").lock());
    }
    EXPECT_FALSE(list.setMinCapacity(3) || list.getMinCapacity() != 0);
    EXPECT_FALSE(list.setElement(25, elements[0], "") || list.rmElement(4, true));
    EXPECT_TRUE(list.setElement(6, elements[0], ""));
    EXPECT_TRUE(list.getToken(*elements[0]) == 5 && list.getToken(*elements[1]) == noToken);
    EXPECT_TRUE(list.rmElement(5, false));
    EXPECT_TRUE(list.size() == 20 && list.getElement(5) == nullptr && list.getToken(*elements[0]) == 6);
    std::shared_ptr<Attribute const> third = elements[3], none;
    EXPECT_TRUE(list.rmElement(third, true));
    EXPECT_FALSE(list.rmElement(third, true) || list.rmElement(none, true));
    EXPECT_TRUE(list.size() == 19 && list.getToken(*elements[4]) == 8);
}

TEST(FieldListTest, SlotsBelowTheMinimumCapacityStay) {
    FieldList list(0);
    EXPECT_TRUE(list.setMinCapacity(2));
    auto const declared = AttrContainer::create(), custom = AttrContainer::create();
    EXPECT_TRUE(list.setElement(1, declared, "not kept"));
    EXPECT_TRUE(list.addElement(AttrContainer::create(), "a") && list.addElement(custom, "b"));
    EXPECT_FALSE(list.setElement(4, declared));
    EXPECT_TRUE(list.rmElement(9, true)) << "there is nothing to remove";
    EXPECT_TRUE(list.rmElement(2, true) && list.rmElement(1, true));
    EXPECT_EQ(3U, list.size());
    EXPECT_EQ(nullptr, list.getElement(1));
    EXPECT_EQ(2U, list.getToken("b"));
    EXPECT_TRUE(list.replaceField(custom, declared));
    EXPECT_EQ("b", list.getElementName(list.getToken(*declared)));
    EXPECT_TRUE(list.setMinCapacity(3));
    EXPECT_EQ(noToken, list.getToken("b")) << "declared slots are not found through the list";
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
