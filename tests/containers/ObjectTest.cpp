// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "containers/ApplicationClasses.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

TEST(ObjectTree, HasThePathsAndNamesThatTheFileSays) {
    auto const root = Object::create(), a = named<Object>("A"), b = named<Object>("B"),
               c = named<Object>("C"), d = named<Object>("D");
    auto const field = AttrContainer::create();
    for (auto const& [parent, child] : {std::pair(root, a), {a, b}, {a, c}, {c, d}})
        EXPECT_TRUE(parent->addChild(child, 0));
    EXPECT_TRUE(a->addField(field, "F", 0));
    std::map<std::string, std::shared_ptr<ObservingObject>> const all{
        {"/", root}, {"/A", a}, {"/A/B", b}, {"/A/C", c}, {"/A/C/D", d}, {"F", field}, {"", nullptr}};
    auto const at = [&](std::string const& path) { return std::dynamic_pointer_cast<Object>(all.at(path)); };
    for (auto const& row : dataRows("containers/names.txt")) {
        SCOPED_TRACE(row.place);
        if (row.section == "path") {
            auto const object = at(row[0]), base = at(row[1]);
            EXPECT_EQ(row[2], object->inqObjPath());
            EXPECT_EQ(row[3], object->inqObjPath(*base));
            EXPECT_EQ(object, b->inqObserver(row[2]).lock());
            EXPECT_EQ(object == base ? nullptr : object, base->inqObject(row[3]));
            EXPECT_EQ(root, object->findRoot());
        } else if (row.section == "lookup") {
            EXPECT_EQ(all.at(row[2]), at(row[0])->inqObserver(row[1]).lock());
        } else if (row.section == "child") {
            auto const child = named<Object>(row[0]);
            bool const isAdded = !row[2].empty();
            EXPECT_EQ(isAdded, a->addChild(child, static_cast<int>(row.number(1))));
            EXPECT_EQ(isAdded ? a : nullptr, child->getParent());
            EXPECT_EQ(row[isAdded ? 2 : 0], child->getName());
            EXPECT_FALSE(isAdded && root->addChild(child, 4)) << "it has a parent";
            EXPECT_EQ(isAdded, a->rmChild(*child, 0));
            EXPECT_EQ(nullptr, child->getParent());
        }
    }
    EXPECT_EQ(nullptr, a->inqObject("F")) << "a field that is no object";
    EXPECT_EQ(a, a->inqObject(std::nullopt));
    EXPECT_EQ(d, std::as_const(*a).inqObject("C/D"));
}

TEST(ObjectAttributes, HaveAccessorsAndInitialValues) {
    auto const object = Object::create();
    EXPECT_TRUE(std::as_const(*object).getUuid().isNil());
    auto const made = object->getUuid();
    EXPECT_FALSE(made.isNil() || made == Object::create()->getUuid());
    EXPECT_TRUE(made == object->getUuid() && made == object->UUID());
    object->setClassVersion({70000, 2});
    EXPECT_EQ(4464, object->MajorVersion());
    EXPECT_EQ(4464U + 2, object->getStoredClassVersion().major + object->getStoredClassVersion().minor);
    EXPECT_TRUE(object->addChild(Object::create(), 0));
    auto const copy = std::dynamic_pointer_cast<Object>(object->duplicate(CreateType::Deep));
    ASSERT_TRUE(copy);
    EXPECT_TRUE(object->isEqualTo(*copy, nullptr, nullptr));
    EXPECT_EQ(made, copy->getUuid()) << "a copy has the UUID of its source";
    EXPECT_EQ(0U, copy->children().getNumChildren()) << "but not its children";
    EXPECT_EQ(&copy->Attr_Event(), copy->getAttr("Event").lock().get());
}

} // namespace
