// SPDX-License-Identifier: MIT
#include "CostFixture.h"
#include "containers/ApplicationClasses.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Wide {
    explicit Wide(int count) : size(count) {}
    std::shared_ptr<Object> object = Object::create();
    std::shared_ptr<AttrContainer> target;
    int size;
};

std::string numbered(int i) { return "member" + std::to_string(i); }

void nothing(Wide&, int) {}
void addField(Wide& w, int i) { w.object->addField(AttrContainer::create(), numbered(i), 0); }
void addAttribute(Wide& w, int i) { w.object->addAttribute(std::make_shared<CustAttr<int>>(i), numbered(i)); }
void addChild(Wide& w, int i) { w.object->addChild(named<Object>(numbered(i)), 0); }
void copy(Wide& w, int i) {
    if (i == 0)
        w.object->duplicate(CreateType::Deep);
}
void addFieldHereAndInTarget(Wide& w, int i) {
    addField(w, i);
    if (i + 1 == w.size)
        w.target = w.object->duplicate(CreateType::Deep);
}
void copyValues(Wide& w, int i) {
    AttrCopyVisitor visitor(*w.target, 8);
    if (i == 0)
        w.object->attributeVisitor(visitor, true);
}
void destroy(Wide& w, int) { w.object.reset(); }
void addUnderTakenName(Wide& w, int i) { w.object->addField(AttrContainer::create(), numbered(i), 16); }
void lookUpField(Wide& w, int i) {
    EXPECT_NE(noToken, w.object->getFieldToken(*w.object->getField(numbered(i)).lock()));
}
void removeFieldsBesidesOneInTwoSlots(Wide& w, int i) {
    i == 0 ? w.object->addField(w.object->getField("member0").lock(), "again", 4)
           : w.object->rmField(w.object->getField(numbered(i)).lock());
}
void visitFields(Wide& w, int i) {
    CollectFields all([](AttrContainer const&) { return true; }, 1, 1);
    if (i == 0)
        w.object->fieldVisitor(all, 1);
    EXPECT_EQ(i == 0 ? static_cast<std::uint64_t>(w.size) : 0U, all.getNumElements());
}
void renameChild(Wide& w, int i) {
    static_cast<void>(w.object->inqObject(numbered(i))->setName("x" + numbered(i), 0));
}
void removeEverySecondChild(Wide& w, int i) {
    if (auto const child = w.object->children().getChild(static_cast<std::uint64_t>(i)))
        w.object->rmChild(*child, 0);
}

TEST(ContainerCost, OfOneMemberHardlyGrowsWithTheirNumber) {
    expectCostHardlyGrows<Wide>({
        {"add fields under one name", nothing,
         [](Wide& w, int) { w.object->addField(AttrContainer::create(), "member", 16); }},
        {"count up from every taken name", addField, addUnderTakenName},
        {"look up fields", addField, lookUpField},
        {"remove fields", addField, removeFieldsBesidesOneInTwoSlots},
        {"copy fields", addField, copy},
        {"copy values to fields", addFieldHereAndInTarget, copyValues},
        {"destroy fields", addField, destroy},
        {"visit fields", addField, visitFields},
        {"add attributes", nothing, addAttribute},
        {"remove attributes", addAttribute, [](Wide& w, int i) { w.object->rmAttribute(numbered(i)); }},
        {"copy attributes", addAttribute, copy},
        {"add children", nothing, addChild},
        {"add children under one name", nothing,
         [](Wide& w, int) { w.object->addChild(Object::create(), 16); }},
        {"rename children", addChild, renameChild},
        {"remove every second child", addChild, removeEverySecondChild},
        {"remove children at a position", addChild, [](Wide& w, int) { w.object->rmChild(1, 0); }},
        {"destroy children", addChild, destroy},
    });
}

} // namespace
