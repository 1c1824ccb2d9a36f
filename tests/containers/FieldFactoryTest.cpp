// SPDX-License-Identifier: MIT
#include "containers/ApplicationClasses.h"

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
    using Row = std::tuple<char const*, bool, bool>;
    for (auto const& [name, isMade, isObject] :
         {Row{"", false, false}, Row{"object", false, false}, Row{"FallbackObject", false, false},
          Row{"AttrContainer", true, false}, Row{"ArrayContainer", true, false},
          Row{"UnknownAttrContainer", true, false}, Row{"Pump", true, false}, Row{"Object", true, true},
          Row{"Station", true, true}}) {
        auto const made = FieldFactory::the()->createField(name);
        ASSERT_EQ(isMade, made != nullptr) << name;
        if (made) {
            EXPECT_EQ(name, made->getClassName());
            EXPECT_EQ(name, made->getName());
        }
        EXPECT_EQ(isObject, FieldFactory::the()->createObject(name) != nullptr) << name;
        auto const names = FieldFactory::the()->getAllRegisteredFields();
        EXPECT_EQ(isMade ? 1 : 0, std::count(names.begin(), names.end(), name));
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
