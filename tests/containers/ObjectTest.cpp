// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "containers/ApplicationClasses.h"

#include <AttributeContainer/FallbackObject.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// "/", "/A", "/A/B", "/A/C", "/A/C/D", and a field "F" of "/A".
struct Tree : testing::Test {
    std::shared_ptr<Object> root = Object::create(), a = named<Object>("A"), b = named<Object>("B"),
                            c = named<Object>("C"), d = named<Object>("D");
    std::shared_ptr<AttrContainer> field = AttrContainer::create();

    void SetUp() override {
        EXPECT_TRUE(root->addChild(a, 0));
        EXPECT_TRUE(a->addChild(b, 0));
        EXPECT_TRUE(a->addChild(c, 0));
        EXPECT_TRUE(c->addChild(d, 0));
        EXPECT_TRUE(a->addField(field, "F", 0));
    }
};

TEST_F(Tree, HasThePathsAndNamesThatTheFileSays) {
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

TEST_F(Tree, ChildrenLiveByTheirParentUnlessHeld) {
    EXPECT_FALSE(a->rmChild(2, 0));
    EXPECT_FALSE(a->rmChild(*root, 0));
    std::weak_ptr<Object> const gone = c;
    c.reset();
    a.reset();
    root.reset();
    EXPECT_TRUE(gone.expired());
    EXPECT_EQ(nullptr, d->getParent());
    EXPECT_EQ(d, d->findRoot());
    EXPECT_TRUE(Object::create()->addChild(d, 0)) << "an orphan finds new parents";
}

TEST(ObjectHooks, DecideAboutChildrenAndParentsAndMayMoveThem) {
    auto const parent = Station::create(), child = Station::create();
    int seenFlags = -1;
    parent->acceptsChild = [&](Object&, int flags) { return seenFlags = flags, false; };
    EXPECT_FALSE(parent->addChild(child, 20));
    EXPECT_EQ(20, seenFlags);
    EXPECT_TRUE(parent->addChild(FallbackObject::create(CreateType::Deep, std::nullopt), 0))
        << "content of unknown classes is not lost";
    parent->acceptsChild = nullptr;
    child->acceptsParent = [](Object&) { return false; };
    EXPECT_FALSE(parent->addChild(child, 0));

    // They may put the child elsewhere; but no object comes below itself.
    auto const other = Object::create();
    child->acceptsParent = [&](Object&) {
        child->acceptsParent = nullptr;
        return other->addChild(child, 0);
    };
    EXPECT_FALSE(parent->addChild(child, 0));
    EXPECT_EQ(other, child->getParent());
    other->rmChild(*child, 0);
    child->acceptsParent = [&](Object&) { return child->addChild(parent, 0); };
    EXPECT_FALSE(parent->addChild(child, 0));
    EXPECT_EQ(child, parent->getParent());
    EXPECT_EQ(nullptr, child->getParent());
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
