// SPDX-License-Identifier: MIT
#include "containers/ApplicationClasses.h"

#include <AttributeContainer/ArrayContainer.h>

#include <gtest/gtest.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

TEST(ArrayContainerTest, DescribesItsElementsWithTwoStrings) {
    auto const array = ArrayContainer::create();
    EXPECT_EQ("ArrayContainer", array->getName());
    EXPECT_EQ("", array->contentType());
    EXPECT_EQ("", array->selectedElement());
    array->contentType("Pump");
    array->selectedElement("p1");
    EXPECT_EQ("p1", array->getAttr("selectedElement").lock()->getValueAsText());
    EXPECT_NE(0U, array->getAttr("contentType").lock()->getFlags().categoryFlag);
    EXPECT_EQ("Pump", array->getAttr(1).lock()->getValueAsText());
    EXPECT_EQ("contentType", array->getAttrDefinition(1)->name);
    EXPECT_EQ(18, array->getAttrCategory(2));
    array->addAttribute(std::make_shared<CustAttr<int>>(1), "extra");
    EXPECT_EQ(3U, array->getAttrToken("extra"));
    array->addField(Pump::create(), "p1", 0);

    auto const copy = std::dynamic_pointer_cast<ArrayContainer>(array->duplicate(CreateType::Deep));
    ASSERT_TRUE(copy);
    EXPECT_TRUE(array->isEqualTo(*copy, nullptr, nullptr));
    EXPECT_EQ((Names{"p1"}), fieldNames(*copy));
    auto const blank = std::dynamic_pointer_cast<ArrayContainer>(array->duplicate(CreateType::Blank));
    EXPECT_EQ("", blank->contentType());
    EXPECT_EQ(0U, blank->getNumFields());
}

} // namespace
