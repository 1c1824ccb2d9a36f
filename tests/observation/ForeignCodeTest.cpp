// SPDX-License-Identifier: MIT
#include "observation/RecordingObserver.h"

#include <AttributeContainer/ActionContainer.h>
#include <AttributeContainer/WriteContextBase.h>

#include <gtest/gtest.h>

#include <sstream>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// A group of one action that tells the observer, and runs a handler when it ends.
class Group : public ActionDefinitionBase {
public:
    explicit Group(std::function<void()> ended) : ended_(std::move(ended)) {}
    ~Group() override { ended_(); }
    std::uint64_t getNumActions() override { return 1; }
    std::optional<std::reference_wrapper<Action>> getActionAt(std::uint64_t) override { return action_; }
    std::string getNameAt(std::uint64_t) override { return "Mine"; }

private:
    ActionNotify action_{0};
    std::function<void()> ended_;
};

/// A short or a long list of references, and the foreign code that runs in the middle of an operation.
struct ForeignCode : testing::Test {
    Log log;
    std::shared_ptr<RecordingObservable> observable;
    std::vector<std::shared_ptr<RecordingObserver>> observers;

    void fill(int count) {
        observable = RecordingObservable::make();
        observers.clear();
        for (int i = 0; i < count; ++i) {
            observers.push_back(RecordingObserver::make("o", log, "/o" + std::to_string(i)));
            observable->known["/o" + std::to_string(i)] = observers.back();
            observable->addObserver(*observers.back(), static_cast<short>(1 + i % 3), NOTIFY, false);
            observable->addPreObserver(*observers.back(), 1, NOTIFY, false);
        }
        observable->addObserver("/nobody", 1, NOTIFY, false);
    }

    /// Observers know exactly the links that are there.
    void expectConsistency() {
        std::uint64_t const links =
            observable ? observable->getNumPrePaths() + observable->getNumPostPaths() : 0;
        for (auto const& observer : observers) {
            std::uint64_t active = 0;
            for (std::uint64_t i = 0; i < links; ++i) {
                ObserverPath& path = observable->getPath(i);
                auto const held = path.isActive() ? path.lookupObserver() : std::nullopt;
                active += held && &held->get() == observer.get() ? 1 : 0;
            }
            EXPECT_EQ(active == 0, observer->watchesNothing());
        }
        if (observable)
            observable->tell();
    }
};

TEST_F(ForeignCode, MayDoAnythingWhilePathsAreCompared) {
    using Case = ForeignCode;
    std::pair<char const*, void (*)(Case&)> const acts[] = {
        {"removes one", [](Case& t) { t.observable->rmObserver(*t.observers[2]); }},
        {"removes all",
         [](Case& t) {
             for (auto const& observer : t.observers)
                 t.observable->rmObserver(*observer);
         }},
        {"adds some",
         [](Case& t) {
             for (auto const& observer : t.observers)
                 t.observable->addObserver(*observer, 2, PRE_NOTIFY, false);
         }},
        {"ends the observers", [](Case& t) { t.observers.clear(); }},
        {"ends the observable", [](Case& t) { t.observable.reset(); }},
        {"ends all",
         [](Case& t) {
             t.observable.reset();
             t.observers.clear();
         }},
    };
    std::pair<char const*, void (*)(Case&, RecordingObservable&)> const operations[] = {
        {"adds a path", [](Case&, RecordingObservable& o) { o.addObserver("/o2", 1, NOTIFY, false); }},
        {"looks a path up", [](Case&, RecordingObservable& o) {
             ObserverPath path(std::nullopt, std::optional<std::string const>("/o2"), 1, NOTIFY);
             o.lookupPath(path);
         }},
        {"removes by path", [](Case&, RecordingObservable& o) {
             ObserverPath path(std::nullopt, std::optional<std::string const>("/o2"), 1, NOTIFY);
             o.removePath(path);
         }},
        {"removes a listed one", [](Case&, RecordingObservable& o) { o.removePath(o.getPath(2)); }},
        {"is informed of a removal", [](Case&, RecordingObservable& o) {
             std::optional<std::string const> const text("/o2");
             o.informRmObservedBy(ObserverPath(std::nullopt, text, 1, PRE_NOTIFY));
         }},
        {"turns a reference into a path",
         [](Case&, RecordingObservable& o) { o.getPath(2).setObserverAsPath(std::nullopt); }},
        {"redirects a link", [](Case& t, RecordingObservable& o) { o.getPath(1).setObserver(*t.observers[2], true); }},
        {"compares", [](Case&, RecordingObservable& o) {
             ObserverPath const path(std::nullopt, std::optional<std::string const>("/o2"), 1, NOTIFY);
             EXPECT_TRUE(path == o.getPath(2));
         }},
        {"resolves", [](Case&, RecordingObservable& o) { o.updateObserverLists(true); }},
        {"activates", [](Case&, RecordingObservable& o) { o.getPath(o.getNumPrePaths()).activate(); }},
        {"is copied", [](Case&, RecordingObservable& o) { RecordingObservable::make()->copyFrom(o); }},
        {"is written", [](Case&, RecordingObservable& o) {
             std::ostringstream out;
             EXPECT_EQ(nullptr, o.writeTo(out, std::make_shared<WriteContextBase>(0)));
         }},
        {"is taken over", [](Case& t, RecordingObservable&) {
             RecordingObserver::make("new", t.log)->takeOverObservationsFrom(*t.observers[2]);
         }},
    };
    for (int const count : {5, 40})
        for (auto const& [actName, act] : acts)
            for (auto const& [name, operate] : operations) {
                SCOPED_TRACE(std::string(name) + " and it " + actName + ", " + std::to_string(count));
                fill(count);
                int acted = 0;
                auto const once = [&, chosen = act] {
                    if (++acted == 1)
                        chosen(*this);
                };
                observers[2]->asked = once;
                observable->asked = once;
                operate(*this, *observable);
                expectConsistency();
            }
}

TEST_F(ForeignCode, MayComeWithTheEndOfAnActionsGroup) {
    using Case = ForeignCode;
    std::pair<char const*, void (*)(Case&)> const acts[] = {
        {"removes all",
         [](Case& t) {
             if (t.observable && !t.observers.empty())
                 t.observable->rmObserver(*t.observers[0]);
         }},
        {"ends the observable", [](Case& t) { t.observable.reset(); }},
        {"ends the observers", [](Case& t) { t.observers.clear(); }},
    };
    std::pair<char const*, void (*)(Case&)> const operations[] = {
        {"removes the observer", [](Case& t) { t.observable->rmObserver(*t.observers[0]); }},
        {"is informed", [](Case& t) { t.observable->informRmObservedBy(*t.observers[0]); }},
        {"removes one", [](Case& t) { t.observable->removePath(std::uint64_t{3}); }},
        {"removes equal ones", [](Case& t) { t.observable->removePath(t.observable->getPath(3)); }},
        {"assigns", [](Case& t) { t.observable->getPath(3) = ObserverPath(); }},
        {"changes the action", [](Case& t) { t.observable->getPath(3).setAction(NOTIFY); }},
        {"ends the observer", [](Case& t) { auto const ended = std::exchange(t.observers, {}); }},
        {"ends the observable", [](Case& t) { t.observable.reset(); }},
        {"adds behind a dead one",
         [](Case& t) {
             t.observable->getPath(3).setObserver(*t.observers[0], true);
             t.observable->addObserver(*t.observers[0], 9, PRE_NOTIFY, false);
         }},
        {"tells",
         [](Case& t) {
             t.observers[0]->changed = [&](Observable& o, Cause const&) {
                 o.removePath(std::uint64_t{2});
                 return Action::ExecOk;
             };
             t.observable->tell();
         }},
    };
    for (auto const& [actName, act] : acts)
        for (auto const& [name, operate] : operations) {
            SCOPED_TRACE(std::string(name) + " and it " + actName);
            fill(1);
            int ended = 0;
            for (short priority = 2; priority < 6; ++priority) {
                auto group = std::make_shared<Group>([&, chosen = act] {
                    ++ended;
                    chosen(*this);
                });
                ActionContainer::the()->registerActionDef(group);
                observable->addObserver(*observers[0], priority, group->getBaseToken(), false);
                ActionContainer::the()->unregisterActionDef(group);
            }
            operate(*this);
            if (observable && !observers.empty())
                observable->rmObserver(*observers[0]);
            observable.reset();
            observers.clear();
            EXPECT_EQ(4, ended);
        }
}

TEST_F(ForeignCode, MayEndTheObservableBetweenTwoActionsOfAWalk) {
    fill(1);
    auto group = std::make_shared<Group>([&] { observable.reset(); });
    ActionContainer::the()->registerActionDef(group);
    observable->addObserver(*observers[0], 9, group->getBaseToken(), false);
    observers[0]->changed = [&](Observable& o, Cause const&) {
        if (group != nullptr) {
            o.removePath(o.getNumPrePaths() + o.getNumPostPaths() - 1);
            ActionContainer::the()->unregisterActionDef(group);
            group.reset();
        }
        return Action::ExecOk;
    };
    observable->tell();
    EXPECT_EQ(nullptr, observable);
    EXPECT_LE(log.size(), 2U);
    EXPECT_TRUE(observers[0]->watchesNothing());
}

} // namespace
