// SPDX-License-Identifier: MIT
#include "observation/ObservationFixture.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Registry : ObservationTest {
    void SetUp() override {
        ActionContainer::cleanup();
        ActionDefinition::cleanup();
    }
};

TEST_F(Registry, TokensOfAnUnregisteredGroupAreNotUsedAgain) {
    ActionContainer& actions = *ActionContainer::the();
    auto const first = std::make_shared<ActionGroup>("xy");
    auto const second = std::make_shared<ActionGroup>("yz");
    EXPECT_FALSE(actions.registerActionDef(nullptr) || actions.registerActionDef(ActionDefinition::the()));
    EXPECT_FALSE(ActionDefinition::the()->getActionAt(3)) << "the library has three actions";
    EXPECT_EQ(NOT_FOUND, first->getBaseToken());
    EXPECT_TRUE(actions.registerActionDef(first));
    EXPECT_FALSE(actions.registerActionDef(first));
    EXPECT_EQ(3U, first->getBaseToken());
    EXPECT_TRUE(actions.registerActionDef(second));
    EXPECT_EQ(4U, actions.getToken("y")) << "the first keeps the name";
    EXPECT_TRUE(actions.unregisterActionDef(first));
    EXPECT_FALSE(actions.unregisterActionDef(first));
    EXPECT_FALSE(actions.getAction(3) || actions.getAction(4) || actions.getName(3));
    EXPECT_EQ(5U, actions.getToken("y")) << "now it means the other one";
    EXPECT_TRUE(actions.registerActionDef(first));
    EXPECT_EQ(7U, first->getBaseToken());
}

TEST_F(Registry, LinksKeepTheGroupOfTheirAction) {
    bool hasEnded = false;
    auto group = std::make_shared<ActionGroup>("M", [&] { hasEnded = true; });
    ActionContainer::the()->registerActionDef(group);
    observable->addObserver(*a, 1, group->getBaseToken(), false);
    observable->addObserver(*a, 2, NOTIFY, false);
    EXPECT_EQ("aa", told());
    ActionContainer::the()->unregisterActionDef(group);
    group.reset();
    std::vector<Observable::NotificationResult> results;
    EXPECT_EQ("a", logged([&] { observable->tell(&results); })) << "an unregistered action is not told";
    EXPECT_EQ(1U, results.size());
    EXPECT_EQ("M", observable->getPath(0).getActionName());
    EXPECT_FALSE(hasEnded);
    observable->removePath(std::uint64_t{0});
    EXPECT_TRUE(hasEnded);
    SetUp();
    EXPECT_EQ("a", told()) << "what a link owns works on";
}

} // namespace
