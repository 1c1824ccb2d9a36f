// SPDX-License-Identifier: MIT
#pragma once

#include "observation/RecordingObserver.h"

#include <AttributeContainer/ActionContainer.h>
#include <AttributeContainer/WriteContextBase.h>

#include <gtest/gtest.h>

#include <numeric>
#include <sstream>
#include <stdexcept>

namespace Zorvan::AttributeContainer::Testing {

/// A group of at most two actions with names of one letter. They tell the observer; a handler runs at the
/// end.
class ActionGroup : public ActionDefinitionBase {
public:
    explicit ActionGroup(
        std::string names, std::function<void()> ended = [] {})
        : names_(std::move(names)), ended_(std::move(ended)) {}
    ~ActionGroup() override { ended_(); }
    std::uint64_t getNumActions() override { return names_.size(); }
    std::optional<std::reference_wrapper<Action>> getActionAt(std::uint64_t index) override {
        return index == 0 ? first_ : second_;
    }
    std::string getNameAt(std::uint64_t index) override { return {names_.at(index)}; }

private:
    std::string names_;
    std::function<void()> ended_;
    ActionNotify first_{0}, second_{0};
};

struct ObservationTest : testing::Test {
    Log log;
    std::shared_ptr<RecordingObservable> observable = RecordingObservable::make();
    std::shared_ptr<RecordingObserver> a = RecordingObserver::make("a", log, "/a");
    std::shared_ptr<RecordingObserver> b = RecordingObserver::make("b", log); // has no object path

    /// The entries of the log that are written meanwhile, in one word; "!" for an exception of a handler.
    std::string logged(std::function<void()> const& act) {
        log.clear();
        try {
            act();
        } catch (std::runtime_error const&) {
            log.push_back("!");
        }
        return std::accumulate(log.begin(), log.end(), std::string());
    }
    std::string told() {
        return logged([&] { observable->tell(); });
    }

    static RecordingObserver::Handler doing(std::function<void()> act,
                                            Action::ExecReturn answer = Action::ExecOk) {
        return [act = std::move(act), answer](Observable&, Cause const&) {
            act();
            return answer;
        };
    }
    static ObserverPath link(Observer& observer, short priority, std::uint64_t action) {
        return {std::nullopt, observer, priority, action};
    }
    /// A link of an action that is not registered any more.
    void addLost(
        Observer& observer, short priority, std::function<void()> ended = [] {}) {
        auto const group = std::make_shared<ActionGroup>("M", std::move(ended));
        ActionContainer::the()->registerActionDef(group);
        observable->addObserver(observer, priority, group->getBaseToken(), false);
        ActionContainer::the()->unregisterActionDef(group);
    }
    static std::string text(Observable& one, int format = ModelFormat::Text) {
        std::ostringstream out;
        EXPECT_EQ(nullptr, one.writeTo(out, std::make_shared<WriteContextBase>(format)));
        return out.str();
    }
    static std::uint64_t numLinks(Observable const& one) {
        return one.getNumPrePaths() + one.getNumPostPaths();
    }
    /// An observable that is constructed as a copy.
    static std::shared_ptr<RecordingObservable> copyOf(Observable const& one) {
        return std::make_shared<RecordingObservable>(std::optional(std::cref(one)));
    }
};

} // namespace Zorvan::AttributeContainer::Testing
