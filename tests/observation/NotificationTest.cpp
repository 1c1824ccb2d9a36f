// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "observation/ObservationFixture.h"

#include <AttributeContainer/InfoStringMap.h>

#include <sstream>
#include <thread>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Notification : ObservationTest {
    std::map<std::string, std::shared_ptr<RecordingObserver>> all;
    bool isPre = false; ///< whether the walks of the scripts are those of the pre list
    std::shared_ptr<ObserverInfo> const expiring = std::make_shared<ObserverInfo>();
    std::vector<Observable::NotificationResult> results;

    std::shared_ptr<ObserverInfo> own() { return observable->lookupNotifyInfo(typeid(ObserverInfo)); }
    void walk() { isPre ? observable->ask() : observable->tell(); }
    void add(std::string const& name, short priority) {
        auto& observer = all[name] = RecordingObserver::make(name, log);
        EXPECT_EQ(Observable::Added, isPre ? observable->addPreObserver(*observer, priority, NOTIFY, false)
                                           : observable->addObserver(*observer, priority, NOTIFY, false));
    }
    void addActionless() {
        isPre ? observable->addPreObserver("x", 1, 4711, false)
              : observable->addObserver("x", 1, 4711, false);
    }
    /// Lets an observer run a script when it is told, once.
    void when(std::string const& name, std::string const& script) {
        all.at(name)->changed = doing([=, this] {
            all.at(name)->changed = nullptr;
            run(script);
        });
    }
    /// data/observation/walks.txt tells what the letters mean.
    void run(std::string const& script) {
        using Argument = std::string const&;
        std::map<char, std::function<void(Argument)>> const commands = {
            {'+', [&](Argument x) { add(x.substr(0, 1), static_cast<short>(std::stoi(x.substr(1)))); }},
            {'-', [&](Argument x) { observable->rmObserver(*all.at(x)); }},
            {'!', [&](Argument x) { all.erase(x); }},
            {'<', [&](Argument x) { observable->getPath(first() + std::stoul(x)).deactivate(); }},
            {'>', [&](Argument) { activateAll(); }},
            {'s',
             [&](Argument) { isPre ? observable->resortPreObservers() : observable->resortPostObservers(); }},
            {'w', [&](Argument x) { walkAgain(x); }},
            {'v', [&](Argument) { isPre ? observable->tell() : observable->ask(); }},
            {'0', [&](Argument) { addActionless(); }},
            {'o', [&](Argument) { observable.reset(); }},
            {'t', [&](Argument) { throw std::runtime_error("handler"); }},
        };
        std::istringstream words(script);
        for (std::string word; words >> word;)
            commands.at(word[0])(word.substr(1));
    }
    std::uint64_t first() const { return isPre ? 0 : observable->getNumPrePaths(); }
    void walkAgain(std::string const& scriptOfD) {
        when("d", scriptOfD);
        walk();
    }
    void activateAll() {
        for (std::uint64_t i = 0; i < numLinks(*observable); ++i)
            observable->getPath(i).activate();
    }
};

TEST_F(Notification, TellsTheHighestPriorityFirstAndAmongEqualsTheLatest) {
    run("+a1 +b5 +c1 +d-3 +e5");
    EXPECT_EQ("ebcad", told());
    run("s");
    EXPECT_EQ("ebcad", told()) << "a sort keeps the order of equal links";
    auto const f = RecordingObserver::make("f", log);
    observable->addObserver(std::make_unique<ObserverPath>(std::nullopt, *f, short{1}, NOTIFY), false);
    EXPECT_EQ("febcad", told()) << "appended";
    run("+g3");
    EXPECT_EQ("gfebcad", told()) << "the new one is not lower than the last one";
    observable->setNotificationEnabled(false);
    run("s");
    EXPECT_EQ("", told());
    observable->setNotificationEnabled(true);
    EXPECT_EQ("ebgfcad", told());
}

TEST_F(Notification, ResultsReachUpToTheObserverThatStopsAndTheCauseIsNotTold) {
    run("+a1 +b2 +c3 +d4");
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

TEST_F(Notification, AnObserverWithoutOwnerIsToldButGivesNoResult) {
    RecordingObserver onStack("s", log);
    EXPECT_EQ(Observable::Added, observable->addObserver(onStack, 1, NOTIFY, false));
    EXPECT_THROW(observable->tell(&results), std::bad_weak_ptr);
    EXPECT_EQ("s", told()) << "the failed walk has ended cleanly";
}

TEST_F(Notification, LinksMayComeAndGoDuringAWalk) {
    for (auto const& row : dataRows("observation/walks.txt"))
        for (bool const pre : {false, true}) {
            SCOPED_TRACE(row.place + (pre ? ", pre" : ""));
            observable = RecordingObservable::make();
            observable->addNotifyInfo(expiring);
            isPre = !pre;
            run("+v1");
            isPre = pre;
            run("+a1 +b2 +c3 +d4 +e5");
            run(row[4]);
            when("v", "o");
            when("c", row[0]);
            EXPECT_EQ(row[1], logged([&] { walk(); }));
            if (!observable) {
                EXPECT_TRUE(all["a"]->watchesNothing() && all["c"]->watchesNothing());
                continue;
            }
            EXPECT_EQ(pre, own() != nullptr);
            EXPECT_EQ(row[2], logged([&] { walk(); }));
            EXPECT_EQ(row[2].size() + row.number(3) + 1, numLinks(*observable));
        }
}

TEST_F(Notification, ExpiringNotesLastUntilTheOutermostPostWalkEnds) {
    auto const keeper = std::make_shared<InfoStringMap>();
    keeper->setExpire(false);
    for (bool const isTold : {false, true}) {
        if (isTold)
            run("+a1 +d2");
        EXPECT_TRUE(observable->addNotifyInfo(expiring) && observable->addNotifyInfo(keeper));
        observable->ask();
        EXPECT_EQ(expiring, own()) << "a pre-walk removes none";
        if (isTold)
            all["d"]->changed = doing([&] {
                run("w");
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
