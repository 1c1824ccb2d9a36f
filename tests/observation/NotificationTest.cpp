// SPDX-License-Identifier: MIT
#include "observation/ObservationFixture.h"

#include <AttributeContainer/InfoStringMap.h>

#include <thread>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Notification : ObservationTest {
    std::map<std::string, std::shared_ptr<RecordingObserver>> all;
    std::shared_ptr<ObserverInfo> const expiring = std::make_shared<ObserverInfo>();
    std::vector<Observable::NotificationResult> results;

    std::shared_ptr<ObserverInfo> own() { return observable->lookupNotifyInfo(typeid(ObserverInfo)); }
    /// Adds the observer of each word, a letter with its priority.
    void add(std::string const& observers) {
        std::istringstream words(observers);
        char name = 0;
        for (short priority = 0; words >> name >> priority;) {
            auto& observer = all[{name}] = RecordingObserver::make({name}, log);
            EXPECT_EQ(Observable::Added, observable->addObserver(*observer, priority, NOTIFY, false));
        }
    }
};

TEST_F(Notification, TellsTheHighestPriorityFirstAndAmongEqualsTheLatest) {
    add("a1 b5 c1 d-3 e5");
    EXPECT_EQ("ebcad", told());
    observable->resortPostObservers();
    EXPECT_EQ("ebcad", told()) << "a sort keeps the order of equal links";
    auto const f = RecordingObserver::make("f", log);
    observable->addObserver(std::make_unique<ObserverPath>(std::nullopt, *f, short{1}, NOTIFY), false);
    EXPECT_EQ("febcad", told()) << "appended";
    add("g3");
    EXPECT_EQ("gfebcad", told()) << "the new one is not lower than the last one";
    observable->setNotificationEnabled(false);
    observable->resortPostObservers();
    EXPECT_EQ("", told());
    observable->setNotificationEnabled(true);
    EXPECT_EQ("ebgfcad", told());
}

TEST_F(Notification, ResultsReachUpToTheObserverThatStopsAndTheCauseIsNotTold) {
    add("a1 b2 c3 d4");
    all["c"]->changed = doing([] {}, Action::ExecFailed);
    all["b"]->changed = doing([] {}, Action::ExecStop);
    EXPECT_EQ("cb", logged([&] { observable->notifyPostObservers(all["d"], &results); }));
    observable->addPreObserver(*all["a"], 1, PRE_NOTIFY, false);
    EXPECT_EQ("", logged([&] { observable->notifyPreObservers(all["a"], &results); }));
    std::string answers;
    for (auto const& [observer, result] : results)
        answers += observer.lock()->getName() + std::to_string(result) + ' ';
    EXPECT_EQ("d1 c3 b100 a1 ", answers) << "not handled, failed, stop, not handled";
}

TEST_F(Notification, LinksMayBeSwitchedSortedAndDroppedDuringAWalk) {
    add("a1 b2 c3 d4 e5");
    all["c"]->changed = doing([&] {
        observable->getPath(1).deactivate();
        observable->resortPostObservers();
    });
    EXPECT_EQ("edca", told());
    all["c"]->changed = nullptr;
    EXPECT_EQ("edca", told());
    all["d"]->changed = doing([&] { observable->getPath(0).activate(); });
    EXPECT_EQ("edcab", told()) << "inactive ones were sorted behind all others";
    observable->addObserver("x", 1, 4711, false); // without an action
    all["d"]->changed = doing([&] { observable->rmObserver(*all["b"]); });
    EXPECT_EQ("edca", told());
    EXPECT_EQ(4U, numLinks(*observable)) << "the one without action went along";
}

TEST_F(Notification, MayEndTheObservable) {
    for (bool const isPre : {false, true})
        for (std::string const ender : {"c", "b", "a"}) {
            observable = RecordingObservable::make();
            add("a1 b2 c3");
            for (auto const& [name, observer] : all)
                observable->addPreObserver(*observer, short{1}, PRE_NOTIFY, false);
            all[ender]->changed = all[ender]->toChange = doing([&] { observable.reset(); });
            auto const notify = isPre ? &Observable::notifyPreObservers : &Observable::notifyPostObservers;
            std::string const names = isPre ? "c?b?a?" : "cba";
            EXPECT_EQ(names.substr(0, names.find(ender) + (isPre ? 2 : 1)),
                      logged([&] { ((*observable).*notify)(nullptr, nullptr); }));
            EXPECT_TRUE(all["a"]->watchesNothing() && all["c"]->watchesNothing());
        }
}

TEST_F(Notification, OfAListThatOutlivesTheObservableEndsWithThat) {
    struct Announcer : RecordingObservable {
        using Observable::notifySequence;
    };
    ObserverList list;
    auto const addFirst = [&](RecordingObserver& observer) {
        list.addAfter(NOT_FOUND, std::make_unique<ObserverPath>(*observable, observer, short{1}, NOTIFY))
            ->activate();
    };
    auto announcer = std::make_shared<Announcer>();
    addFirst(*b);
    addFirst(*a);
    a->changed = doing([&] {
        announcer.reset();
        addFirst(*b);
    });
    EXPECT_EQ("ba", logged([&] { announcer->notifySequence(nullptr, &list, nullptr); }));
    a->changed = nullptr;
    announcer = std::make_shared<Announcer>();
    EXPECT_EQ("bab", logged([&] { announcer->notifySequence(nullptr, &list, nullptr); }));
}

TEST_F(Notification, ExpiringNotesLastUntilTheOutermostPostWalkEnds) {
    auto const keeper = std::make_shared<InfoStringMap>();
    keeper->setExpire(false);
    for (bool const isTold : {false, true}) {
        if (isTold)
            add("a1 d2");
        EXPECT_TRUE(observable->addNotifyInfo(expiring) && observable->addNotifyInfo(keeper));
        observable->ask();
        EXPECT_EQ(expiring, own()) << "a pre-walk removes none";
        if (isTold)
            all["d"]->changed = doing([&] {
                all["d"]->changed = nullptr;
                observable->tell();
                EXPECT_EQ(expiring, own()) << "the outer walk still runs";
            });
        observable->tell();
        EXPECT_EQ(nullptr, own());
        EXPECT_EQ(keeper, observable->lookupNotifyInfo(typeid(InfoStringMap)));
    }
    EXPECT_EQ(1, observable->removeNotifyInfos(true));
}

TEST_F(Notification, NotesAreKeptByTypeAndThread) {
    auto const other = std::make_shared<ObserverInfo>();
    auto const failed = std::make_shared<InfoFailed>(nullptr);
    EXPECT_FALSE(observable->addNotifyInfo(nullptr) || observable->copyNotifyInfos());
    observable->addNotifyInfo(expiring);
    observable->addNotifyInfo(other);
    observable->addNotifyInfo(failed);
    std::thread([&] { EXPECT_EQ(nullptr, own()); }).join();
    auto const copy = observable->copyNotifyInfos();
    EXPECT_EQ(2U, copy->size());
    EXPECT_FALSE(observable->removeNotifyInfo(expiring, true)) << "another one is attached";
    EXPECT_TRUE(observable->removeNotifyInfo(other, true));
    EXPECT_EQ(failed, observable->removeNotifyInfo(typeid(InfoFailed), true));
    EXPECT_EQ(nullptr, observable->copyNotifyInfos());
    observable->setNotifyInfos(copy);
    EXPECT_EQ(other, own());
    observable->addNotifyInfo(expiring);
    EXPECT_EQ(1, observable->removeNotifyInfos(std::shared_ptr<Observable::NotifyInfoMap const>(copy)));
    EXPECT_EQ(expiring, own());
}

TEST_F(Notification, NotesOfAnEndedObservableAreNotServedToTheNextAtItsAddress) {
    alignas(RecordingObservable) unsigned char place[sizeof(RecordingObservable)];
    auto const makeHere = [&] {
        return std::shared_ptr<RecordingObservable>(new (place) RecordingObservable, [](auto* one) {
            // Ended on another thread, whose table knows nothing of the notes.
            std::thread([one] { one->~RecordingObservable(); }).join();
        });
    };
    makeHere()->addNotifyInfo(expiring);
    observable = makeHere();
    EXPECT_FALSE(own() || observable->copyNotifyInfos());
    observable->addNotifyInfo(expiring);
    EXPECT_EQ(expiring, observable->removeNotifyInfo(typeid(ObserverInfo), true));
    observable.reset();
}

} // namespace
