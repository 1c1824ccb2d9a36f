// SPDX-License-Identifier: MIT
#include "observation/RecordingObserver.h"

#include <AttributeContainer/InfoStringMap.h>

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <thread>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Notification : testing::Test {
    Log log;
    std::shared_ptr<RecordingObservable> observable = RecordingObservable::make();

    std::shared_ptr<RecordingObserver> post(std::string const& name, short priority) {
        auto observer = RecordingObserver::make(name, log);
        EXPECT_EQ(Observable::Added, observable->addObserver(*observer, priority, NOTIFY, false));
        return observer;
    }
    Log told() {
        log.clear();
        observable->tell();
        return log;
    }
};

TEST_F(Notification, TellsTheHighestPriorityFirstAndAmongEqualsTheLatest) {
    auto const a = post("a", 1), b = post("b", 5), c = post("c", 1), d = post("d", -3), e = post("e", 5);
    EXPECT_EQ((Log{"e", "b", "c", "a", "d"}), told());
    observable->resortPostObservers();
    EXPECT_EQ((Log{"e", "b", "c", "a", "d"}), told()) << "a sort keeps the order of equal links";
}

TEST_F(Notification, AppendedLinksAreToldBeforeTheSortedOnesUntilTheListIsSorted) {
    auto const a = post("a", 5);
    auto const b = RecordingObserver::make("b", log);
    observable->addObserver(std::make_unique<ObserverPath>(std::nullopt, *b, short{1}, NOTIFY), false);
    EXPECT_EQ((Log{"b", "a"}), told());
    auto const c = post("c", 3);
    EXPECT_EQ((Log{"c", "b", "a"}), told()) << "the new one is not lower than the last one";
    observable->resortPostObservers();
    EXPECT_EQ((Log{"a", "c", "b"}), told());
}

TEST_F(Notification, ResultsReachUpToTheObserverThatStops) {
    auto const a = post("a", 1), b = post("b", 2), c = post("c", 3);
    c->changed = [](Observable&, Cause const&) { return Action::ExecFailed; };
    b->changed = [](Observable&, Cause const&) { return Action::ExecStop; };
    std::vector<Observable::NotificationResult> results;
    observable->tell(&results);
    ASSERT_EQ(2U, results.size());
    EXPECT_EQ(c, results[0].observer.lock());
    EXPECT_EQ(Action::ExecFailed, results[0].result);
    EXPECT_EQ(b, results[1].observer.lock());
    EXPECT_EQ(Action::ExecStop, results[1].result);
    EXPECT_EQ((Log{"c", "b"}), log);
}

TEST_F(Notification, TheCauseItselfIsNotTold) {
    auto const a = post("a", 1), b = post("b", 2);
    observable->addPreObserver(*a, 1, PRE_NOTIFY, false);
    std::vector<Observable::NotificationResult> results;
    observable->notifyPreObservers(a, &results);
    observable->notifyPostObservers(a, &results);
    EXPECT_EQ((Log{"b"}), log);
    ASSERT_EQ(3U, results.size());
    EXPECT_EQ(Action::ExecNotHandled, results[0].result);
    EXPECT_EQ(Action::ExecOk, results[1].result);
    EXPECT_EQ(Action::ExecNotHandled, results[2].result);
}

TEST_F(Notification, NobodyIsToldWhileItIsSwitchedOff) {
    auto const a = post("a", 1);
    std::vector<Observable::NotificationResult> results;
    observable->setNotificationEnabled(false);
    observable->tell(&results);
    EXPECT_TRUE(results.empty() && log.empty());
    observable->setNotificationEnabled(true);
    EXPECT_EQ((Log{"a"}), told());
}

TEST_F(Notification, AnObserverWithoutOwnerIsToldButGivesNoResult) {
    RecordingObserver onStack("stack", log);
    EXPECT_EQ(Observable::Added, observable->addObserver(onStack, 1, NOTIFY, false));
    EXPECT_EQ((Log{"stack"}), told());
    std::vector<Observable::NotificationResult> results;
    EXPECT_THROW(observable->tell(&results), std::bad_weak_ptr);
    EXPECT_EQ((Log{"stack"}), told()) << "the failed walk has ended cleanly";
}

/// What a handler may do while the walk stands at it. Links of a to e have the priorities 1 to 5, the handler
/// is c's.
struct DuringWalkRow {
    char const* what;
    std::function<void(Notification&, std::map<std::string, std::shared_ptr<RecordingObserver>>&)> act;
    Log during;                 ///< told in the walk
    Log after;                  ///< told in the next one, by then without handler
    std::uint64_t inactive = 0; ///< links that are left and not told
};

TEST_F(Notification, LinksMayComeAndGoDuringAWalk) {
    using Observers = std::map<std::string, std::shared_ptr<RecordingObserver>>;
    auto const add = [](Notification& test, Observers& all, char const* name, short priority) {
        all[name] = test.post(name, priority);
    };
    DuringWalkRow const rows[] = {
        {"removes itself",
         [](auto& t, auto& all) { t.observable->rmObserver(*all["c"]); },
         {"e", "d", "c", "b", "a"},
         {"e", "d", "b", "a"}},
        {"removes the next",
         [](auto& t, auto& all) { t.observable->rmObserver(*all["b"]); },
         {"e", "d", "c", "a"},
         {"e", "d", "c", "a"}},
        {"removes a previous one",
         [](auto& t, auto& all) { t.observable->rmObserver(*all["e"]); },
         {"e", "d", "c", "b", "a"},
         {"d", "c", "b", "a"}},
        {"removes by index until none is left",
         [](auto& t, auto&) {
             while (t.observable->getNumPostPaths() > 0)
                 t.observable->removePath(0);
         },
         {"e", "d", "c"},
         {}},
        {"destroys itself",
         [](auto&, auto& all) { all.erase("c"); },
         {"e", "d", "c", "b", "a"},
         {"e", "d", "b", "a"}},
        {"destroys the others",
         [](auto&, auto& all) {
             for (auto name : {"a", "b", "d", "e"})
                 all.erase(name);
         },
         {"e", "d", "c"},
         {"c"}},
        {"adds below",
         [&](auto& t, auto& all) { add(t, all, "f", 2); },
         {"e", "d", "c", "f", "b", "a"},
         {"e", "d", "c", "f", "b", "a"}},
        {"adds at the bottom",
         [&](auto& t, auto& all) { add(t, all, "f", -9); },
         {"e", "d", "c", "b", "a", "f"},
         {"e", "d", "c", "b", "a", "f"}},
        {"adds above",
         [&](auto& t, auto& all) { add(t, all, "f", 4); },
         {"e", "d", "c", "b", "a"},
         {"e", "f", "d", "c", "b", "a"}},
        {"adds among its equals",
         [&](auto& t, auto& all) { add(t, all, "f", 3); },
         {"e", "d", "c", "b", "a"},
         {"e", "d", "f", "c", "b", "a"}},
        {"replaces the next",
         [&](auto& t, auto& all) {
             t.observable->rmObserver(*all["b"]);
             add(t, all, "f", 2);
         },
         {"e", "d", "c", "f", "a"},
         {"e", "d", "c", "f", "a"}},
        {"deactivates the next and sorts",
         [](auto& t, auto&) {
             t.observable->getPath(1).deactivate();
             t.observable->resortPostObservers();
         },
         {"e", "d", "c", "a"},
         {"e", "d", "c", "a"},
         1},
        {"deactivates and activates one that was told",
         [](auto& t, auto&) {
             t.observable->getPath(4).deactivate();
             t.observable->getPath(4).activate();
         },
         {"e", "d", "c", "b", "a"},
         {"e", "d", "c", "b", "a"}},
        {"tells all over again once",
         [](auto& t, auto& all) {
             all["c"]->changed = nullptr;
             t.observable->tell();
         },
         {"e", "d", "c", "e", "d", "c", "b", "a", "b", "a"},
         {"e", "d", "c", "b", "a"}},
        {"removes the next in a nested walk",
         [](auto& t, auto& all) {
             all["c"]->changed = nullptr;
             all["d"]->changed = [&](Observable& o, Cause const&) {
                 o.rmObserver(*all["b"]);
                 return Action::ExecOk;
             };
             t.observable->tell();
             all["d"]->changed = nullptr;
         },
         {"e", "d", "c", "e", "d", "c", "a", "a"},
         {"e", "d", "c", "a"}},
    };
    for (DuringWalkRow const& row : rows) {
        SCOPED_TRACE(row.what);
        observable = RecordingObservable::make();
        Observers all;
        for (short priority = 1; priority <= 5; ++priority)
            add(*this, all, std::string(1, static_cast<char>('a' + priority - 1)).c_str(), priority);
        all["c"]->changed = [&](Observable&, Cause const&) {
            row.act(*this, all);
            return Action::ExecOk;
        };
        EXPECT_EQ(row.during, told());
        if (all.contains("c"))
            all["c"]->changed = nullptr;
        EXPECT_EQ(row.after, told());
        EXPECT_EQ(row.after.size() + row.inactive, observable->getNumPostPaths());
    }
}

TEST_F(Notification, AnInactiveLinkThatIsActivatedDuringAWalkIsToldInTheNext) {
    auto const a = post("a", 1), b = post("b", 9);
    observable->getPath(0).deactivate();
    EXPECT_EQ((Log{"b"}), told());
    b->changed = [&](Observable& o, Cause const&) {
        for (std::uint64_t i = 0; i < o.getNumPostPaths(); ++i)
            o.getPath(i).activate();
        return Action::ExecOk;
    };
    EXPECT_EQ((Log{"b", "a"}), told()) << "it stands below the running one";
    EXPECT_EQ((Log{"b", "a"}), told());
}

TEST_F(Notification, TheObservableMayEndInAWalk) {
    auto const a = post("a", 1), b = post("b", 2);
    b->changed = [&](Observable&, Cause const&) {
        observable.reset();
        return Action::ExecOk;
    };
    std::vector<Observable::NotificationResult> results;
    observable->tell(&results);
    EXPECT_EQ((Log{"b"}), log);
    EXPECT_EQ(1U, results.size());
    EXPECT_TRUE(a->watchesNothing() && b->watchesNothing());

    // Also from a nested walk, of the other list, when the handler throws.
    observable = RecordingObservable::make();
    observable->addPreObserver(*a, 1, PRE_NOTIFY, false);
    observable->addObserver(*b, 1, NOTIFY, false);
    a->toChange = [&](Observable&, Cause const&) -> Action::ExecReturn {
        observable->tell();
        throw std::runtime_error("handler");
    };
    EXPECT_THROW(observable->ask(), std::runtime_error);
    EXPECT_EQ(nullptr, observable);
}

TEST_F(Notification, AThrowingHandlerLeavesTheObservableUsable) {
    auto const a = post("a", 1), b = post("b", 2), c = post("c", 3);
    b->changed = [&](Observable& o, Cause const&) -> Action::ExecReturn {
        o.rmObserver(*c);
        throw std::runtime_error("handler");
    };
    observable->addNotifyInfo(std::make_shared<ObserverInfo>());
    EXPECT_THROW(observable->tell(), std::runtime_error);
    EXPECT_EQ(nullptr, observable->lookupNotifyInfo(typeid(ObserverInfo)));
    b->changed = nullptr;
    EXPECT_EQ((Log{"b", "a"}), told());
}

TEST_F(Notification, ExpiringNotesLastUntilTheOutermostPostWalkEnds) {
    auto const keeper = std::make_shared<InfoStringMap>();
    keeper->setExpire(false);
    auto const a = RecordingObserver::make("a", log);
    observable->addPreObserver(*a, 1, PRE_NOTIFY, false);
    a->toChange = [&](Observable& o, Cause const&) {
        EXPECT_TRUE(o.addNotifyInfo(std::make_shared<InfoFailed>(nullptr)));
        EXPECT_TRUE(o.addNotifyInfo(keeper));
        return Action::ExecFailed;
    };
    for (bool const hasPostObserver : {false, true}) {
        if (hasPostObserver)
            observable->addObserver(*a, 1, NOTIFY, false);
        a->changed = [&](Observable& o, Cause const&) {
            a->changed = nullptr;
            dynamic_cast<RecordingObservable&>(o).tell();
            EXPECT_NE(nullptr, o.lookupNotifyInfo(typeid(InfoFailed))) << "the outer walk still runs";
            return Action::ExecOk;
        };
        observable->ask();
        EXPECT_NE(nullptr, observable->lookupNotifyInfo(typeid(InfoFailed))) << "a pre-walk removes none";
        observable->tell();
        EXPECT_EQ(nullptr, observable->lookupNotifyInfo(typeid(InfoFailed)));
        EXPECT_EQ(keeper, observable->lookupNotifyInfo(typeid(InfoStringMap)));
    }
    EXPECT_EQ(1, observable->removeNotifyInfos(true));
}

TEST_F(Notification, NotesAreKeptByTypeAndThread) {
    auto const first = std::make_shared<ObserverInfo>(), second = std::make_shared<ObserverInfo>();
    auto const failed = std::make_shared<InfoFailed>(nullptr);
    EXPECT_FALSE(observable->addNotifyInfo(nullptr));
    EXPECT_EQ(nullptr, observable->copyNotifyInfos());
    observable->addNotifyInfo(first);
    observable->addNotifyInfo(second);
    observable->addNotifyInfo(failed);
    EXPECT_EQ(second, observable->lookupNotifyInfo(typeid(ObserverInfo)));
    std::thread([&] { EXPECT_EQ(nullptr, observable->lookupNotifyInfo(typeid(ObserverInfo))); }).join();

    auto const copy = observable->copyNotifyInfos();
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(2U, copy->size());
    EXPECT_FALSE(observable->removeNotifyInfo(first, true)) << "another one is attached";
    EXPECT_TRUE(observable->removeNotifyInfo(second, true));
    EXPECT_EQ(failed, observable->removeNotifyInfo(typeid(InfoFailed), true));
    EXPECT_EQ(nullptr, observable->copyNotifyInfos());
    observable->setNotifyInfos(copy);
    EXPECT_EQ(second, observable->lookupNotifyInfo(typeid(ObserverInfo)));
    observable->addNotifyInfo(first);
    EXPECT_EQ(1, observable->removeNotifyInfos(std::shared_ptr<Observable::NotifyInfoMap const>(copy)));
    EXPECT_EQ(first, observable->lookupNotifyInfo(typeid(ObserverInfo)));
}

TEST_F(Notification, NotesOfAnEndedObservableAreNotServedToTheNextAtItsAddress) {
    alignas(RecordingObservable) unsigned char place[sizeof(RecordingObservable)];
    auto const makeHere = [&] {
        return std::shared_ptr<RecordingObservable>(
            new (place) RecordingObservable, [](RecordingObservable* one) {
                // Ended on another thread, whose table knows nothing of the notes.
                std::thread([one] { one->~RecordingObservable(); }).join();
            });
    };
    makeHere()->addNotifyInfo(std::make_shared<ObserverInfo>());
    auto const next = makeHere();
    EXPECT_EQ(nullptr, next->lookupNotifyInfo(typeid(ObserverInfo)));
    EXPECT_EQ(nullptr, next->copyNotifyInfos());
    auto const own = std::make_shared<ObserverInfo>();
    next->addNotifyInfo(own);
    EXPECT_EQ(own, next->removeNotifyInfo(typeid(ObserverInfo), true));
}

} // namespace
