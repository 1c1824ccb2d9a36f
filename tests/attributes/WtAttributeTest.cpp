// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"

#include <AttributeContainer/Object.h>

namespace Zorvan::AttributeContainer::Testing {

TEST(Attribute, PathsLeadThroughTheContainer) {
    auto const root = Object::create(), child = Object::create();
    auto const leaf = AttrContainer::create();
    auto const attribute = std::make_shared<CustAttr<int>>();
    root->addChild(child, 0);
    child->addField(leaf, "leaf", 0);
    child->addAttribute(attribute, "x");
    EXPECT_EQ(std::as_const(*attribute).inqObjPath(), child->inqObjPath().value() + "/x");
    EXPECT_EQ(&attribute->lookupObject()->get(), static_cast<Observer const*>(child.get()));
    EXPECT_EQ(attribute->inqObserver("").lock(), attribute);
    EXPECT_EQ(std::as_const(*attribute).inqObserver("leaf").lock(), leaf);
    EXPECT_TRUE(attribute->inqObserver("nobody").expired());
    EXPECT_TRUE(CustAttr<int>().inqObserver("leaf").expired());
    EXPECT_EQ(AttrContainer::create()->Attr_name().inqObjPath(), "Name") << "the container has no path";
}

TEST(Attribute, FailuresChangeNothing) {
    CustAttr<int> attribute(1);
    EXPECT_EQ(read(attribute, "Value word\n}")->getCode(), StreamFailure);
    EXPECT_EQ(attribute.getValue(), 1);
    EXPECT_EQ(read(attribute, "Value 12\nWrite word\n}")->getCode(), StreamFailure);
    EXPECT_EQ(read(attribute, "Odd \"Value 7\nValue 8\n}\"\nValue 9\n}")->getCode(), UnknownContent);
    EXPECT_EQ(attribute.getValue(), 9);
    EXPECT_EQ(read(attribute, "Valu")->getCode(), StreamFailure);

    std::ostringstream out;
    auto const context = std::make_shared<WriteContextBase>();
    context->setWriteOnlyMarked(true);
    EXPECT_EQ(attribute.writeTo(out, context)->getCode(), NotMarked);
    EXPECT_EQ(out.str(), "");
    out.setstate(std::ios_base::badbit);
    attribute.setMarked(true);
    EXPECT_EQ(attribute.writeTo(out, context)->getCode(), StreamFailure);
}

} // namespace Zorvan::AttributeContainer::Testing
