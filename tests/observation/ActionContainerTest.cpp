// SPDX-License-Identifier: MIT
#include "observation/RecordingObserver.h"

#include <AttributeContainer/ActionContainer.h>

#include <gtest/gtest.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

class CountingAction : public Action {
public:
    explicit CountingAction(int& executions) : Action(0), executions_(executions) {}
    ExecReturn execute(Observable&, Observer&,
                       std::optional<std::reference_wrapper<ObservingObject>>) override {
        ++executions_;
        return ExecOk;
    }

private:
    int& executions_;
};

class Group : public ActionDefinitionBase {
public:
    explicit Group(std::vector<std::string> names) : names_(std::move(names)) {
        for (std::size_t i = 0; i < names_.size(); ++i)
            actions_.push_back(std::make_unique<CountingAction>(executions));
    }
    std::uint64_t getNumActions() override { return names_.size(); }
    std::optional<std::reference_wrapper<Action>> getActionAt(std::uint64_t index) override {
        return *actions_.at(index);
    }
    std::string getNameAt(std::uint64_t index) override { return names_.at(index); }

    int executions = 0;

private:
    std::vector<std::string> names_;
    std::vector<std::unique_ptr<CountingAction>> actions_;
};

struct Registry : testing::Test {
    void SetUp() override {
        ActionContainer::cleanup();
        ActionDefinition::cleanup();
    }
    void TearDown() override { SetUp(); }
};

TEST_F(Registry, AFreshOneKnowsTheLibrarysActions) {
    ActionContainer& actions = *ActionContainer::the();
    char const* const names[] = {"Notify", "PreNotify", "Propagate"};
    for (std::uint64_t token = 0; token < 3; ++token) {
        EXPECT_EQ(token, actions.getToken(names[token]));
        EXPECT_EQ(names[token], actions.getName(token));
        ASSERT_TRUE(actions.getAction(token));
        EXPECT_EQ(token, actions.getAction(token)->get().getToken());
        EXPECT_EQ(names[token], actions.getAction(token)->get().getName());
        EXPECT_EQ(token, ActionDefinition::the()->getIndexOf(names[token]));
    }
    EXPECT_FALSE(actions.getAction(3));
    EXPECT_EQ(std::nullopt, actions.getName(3));
    EXPECT_EQ(NOT_FOUND, actions.getToken("notify"));
    EXPECT_FALSE(actions.registerActionDef(ActionDefinition::the()));
    EXPECT_FALSE(ActionDefinition::the()->getActionAt(3));
}

TEST_F(Registry, TokensOfAnUnregisteredGroupAreNotUsedAgain) {
    ActionContainer& actions = *ActionContainer::the();
    auto const first = std::make_shared<Group>(std::vector<std::string>{"one", "two"});
    auto const second = std::make_shared<Group>(std::vector<std::string>{"two", "three"});
    EXPECT_FALSE(actions.registerActionDef(nullptr));
    EXPECT_EQ(NOT_FOUND, first->getBaseToken());
    EXPECT_TRUE(actions.registerActionDef(first));
    EXPECT_FALSE(actions.registerActionDef(first));
    EXPECT_EQ(3U, first->getBaseToken());
    EXPECT_EQ(4U, actions.getToken("two"));
    EXPECT_TRUE(actions.registerActionDef(second));
    EXPECT_EQ(4U, actions.getToken("two")) << "the first keeps the name";
    EXPECT_TRUE(actions.unregisterActionDef(first));
    EXPECT_FALSE(actions.unregisterActionDef(first));
    EXPECT_FALSE(actions.getAction(3) || actions.getAction(4));
    EXPECT_EQ(5U, actions.getToken("two")) << "now it means the other one";
    EXPECT_EQ(std::nullopt, actions.getName(3));
    EXPECT_TRUE(actions.registerActionDef(first));
    EXPECT_EQ(7U, first->getBaseToken());
}

TEST_F(Registry, LinksKeepTheGroupOfTheirAction) {
    Log log;
    auto const observable = RecordingObservable::make();
    auto const observer = RecordingObserver::make("o", log);
    auto group = std::make_shared<Group>(std::vector<std::string>{"Mine"});
    std::weak_ptr<Group> const watch = group;
    int const& executions = group->executions;
    ActionContainer::the()->registerActionDef(group);
    observable->addObserver(*observer, 1, group->getBaseToken(), false);
    observable->addObserver(*observer, 2, NOTIFY, false);
    observable->tell();
    EXPECT_EQ(1, executions);

    ActionContainer::the()->unregisterActionDef(group);
    group.reset();
    ASSERT_FALSE(watch.expired());
    std::vector<Observable::NotificationResult> results;
    observable->tell(&results);
    EXPECT_EQ(1, executions) << "an unregistered action is not told";
    EXPECT_EQ(1U, results.size());
    EXPECT_EQ("Mine", observable->getPath(0).getActionName());
    observable->removePath(std::uint64_t{0});
    EXPECT_TRUE(watch.expired());

    ActionContainer::cleanup();
    ActionDefinition::cleanup();
    log.clear();
    observable->tell();
    EXPECT_EQ((Log{"o"}), log) << "what a link owns works on";
}

TEST_F(Registry, AHandlerMayEndItsOwnAction) {
    Log log;
    auto const observable = RecordingObservable::make();
    auto const a = RecordingObserver::make("a", log), b = RecordingObserver::make("b", log);
    observable->addObserver(*a, 1, NOTIFY, false);
    observable->addObserver(*b, 2, NOTIFY, false);
    b->changed = [&](Observable& o, Cause const&) {
        o.rmObserver(*a);
        o.rmObserver(*b);
        ActionContainer::cleanup();
        ActionDefinition::cleanup();
        return Action::ExecOk;
    };
    observable->tell();
    EXPECT_EQ((Log{"b"}), log);
    EXPECT_EQ(0U, observable->getNumPostPaths());
}

} // namespace
