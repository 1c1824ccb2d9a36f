// SPDX-License-Identifier: MIT
#include "containers/ApplicationClasses.h"

#include <AttributeContainer/ArrayContainer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// Goes after everything below it, while the program ends.
struct LastUse {
    ~LastUse() {
        auto const factory = FieldFactory::the();
        if (!factory->createField("Object") || factory->createField("Pump") ||
            AttrContainer::keyTable.getName(0) != "Attr<int>")
            std::abort();
    }
} const lastUse;

// Static initialisers of applications register classes, make instances and use
// tables; nothing says that the library's own come first.
auto const pumpRegistration = FieldFactory::registerField<Pump>(Pump::getStaticClassName());
auto const stationRegistration = FieldFactory::registerField<Station>(Station::getStaticClassName());
auto const earlyStation = FieldFactory::the() -> createObject("Station");
auto const earlyObject = FieldFactory::the() -> createField("Object");
auto const earlyToken = AttrContainer::keyTable.getToken("SubContainer");

TEST(FieldFactoryTest, ServesStaticInitialisers) {
    ASSERT_TRUE(earlyStation && earlyObject);
    EXPECT_EQ(6U, earlyStation->getAttrToken("Level"));
    EXPECT_EQ("Object", earlyObject->getName());
    EXPECT_EQ(57U, earlyToken);
}

TEST(FieldFactoryTest, MakesRegisteredClassesOnly) {
    struct Row {
        char const* name;
        bool isMade;
        bool isObject;
    };
    for (Row const& row : std::initializer_list<Row>{{"", false, false},
                                                     {"object", false, false},
                                                     {"FallbackObject", false, false},
                                                     {"AttrContainer", true, false},
                                                     {"ArrayContainer", true, false},
                                                     {"UnknownAttrContainer", true, false},
                                                     {"Pump", true, false},
                                                     {"Object", true, true},
                                                     {"Station", true, true}}) {
        auto const made = FieldFactory::the()->createField(row.name);
        ASSERT_EQ(row.isMade, made != nullptr) << row.name;
        if (made) {
            EXPECT_EQ(row.name, made->getClassName());
            EXPECT_EQ(row.name, made->getName());
        }
        EXPECT_EQ(row.isObject, FieldFactory::the()->createObject(row.name) != nullptr) << row.name;
        auto const names = FieldFactory::the()->getAllRegisteredFields();
        EXPECT_EQ(row.isMade ? 1 : 0, std::count(names.begin(), names.end(), row.name));
    }
}

TEST(FieldFactoryTest, ARegistrationLastsAsLongAsItsHandle) {
    auto first = FieldFactory::registerField<Pump>("Thing");
    ASSERT_TRUE(first);
    EXPECT_FALSE(FieldFactory::registerField<Station>("Thing"));
    EXPECT_TRUE(std::dynamic_pointer_cast<Pump>(FieldFactory::the()->createField("Thing")));
    first.reset();
    EXPECT_FALSE(FieldFactory::the()->createField("Thing"));
    EXPECT_TRUE(FieldFactory::registerField<Station>("Thing")) << "and goes at once";
    EXPECT_FALSE(FieldFactory::removeField("Thing"));
}

TEST(FieldFactoryTest, TheLibrarysClassesCanBeReplaced) {
    EXPECT_TRUE(FieldFactory::removeField("ArrayContainer"));
    EXPECT_FALSE(FieldFactory::removeField("ArrayContainer"));
    EXPECT_FALSE(FieldFactory::the()->createField("ArrayContainer"));
    EXPECT_FALSE(Pump::create()->getField("Motor").lock()) << "a declared field that cannot be made";
    static auto const restored = FieldFactory::registerField<ArrayContainer>("ArrayContainer");
    EXPECT_TRUE(Pump::create()->getField("Motor").lock());
}

} // namespace
