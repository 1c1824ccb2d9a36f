// SPDX-License-Identifier: MIT
#include "observation/RecordingObserver.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct ObservableLinks : testing::Test {
    Log log;
    std::shared_ptr<RecordingObservable> observable = RecordingObservable::make();
    std::shared_ptr<RecordingObserver> a = RecordingObserver::make("a", log, "/a");
    std::shared_ptr<RecordingObserver> b = RecordingObserver::make("b", log);

    std::unique_ptr<ObserverPath> link(Observer& observer, short priority, std::uint64_t action) {
        return std::make_unique<ObserverPath>(std::nullopt, observer, priority, action);
    }
};

TEST_F(ObservableLinks, AnEqualLinkIsNotAddedTwiceToOneList) {
    EXPECT_EQ(Observable::Added, observable->addObserver(*a, 1, NOTIFY, false));
    EXPECT_EQ(Observable::AlreadyPresent, observable->addObserver(*a, 7, NOTIFY, true));
    EXPECT_EQ(Observable::Added, observable->addObserver(*a, 1, PRE_NOTIFY, false)) << "another action";
    EXPECT_EQ(Observable::Added, observable->addPreObserver(*a, 1, NOTIFY, false)) << "the other list";
    EXPECT_EQ(Observable::AlreadyPresent, observable->addObserver("/a", 1, NOTIFY, false))
        << "by its object path";
    EXPECT_EQ(Observable::AlreadyPresent, observable->addObserver(nullptr, true));
    EXPECT_EQ(1U, observable->getNumPrePaths());
    EXPECT_EQ(2U, observable->getNumPostPaths());
    EXPECT_EQ(2U, a->entryOf(*observable)) << "one entry for each active link";
}

TEST_F(ObservableLinks, IndicesSeeThePreListBeforeThePostList) {
    observable->addObserver(*a, 1, NOTIFY, false);
    observable->addPreObserver(*b, 2, PRE_NOTIFY, false);
    observable->addPreObserver(*a, 3, PRE_NOTIFY, false);
    EXPECT_EQ(2, observable->getPath(0).getPriority());
    EXPECT_EQ(3, observable->getPath(1).getPriority());
    EXPECT_EQ(1, std::as_const(*observable).getPath(2).getPriority());
    EXPECT_EQ(2U, observable->lookupPath(*link(*a, 9, NOTIFY)));
    EXPECT_EQ(1U, observable->lookupPath(*link(*a, 9, PRE_NOTIFY)));
    EXPECT_EQ(NOT_FOUND, observable->lookupPath(*link(*b, 9, NOTIFY)));
    try {
        observable->getPath(3);
        FAIL();
    } catch (std::out_of_range const& error) {
        EXPECT_STREQ("invalid vector subscript", error.what());
    }
    EXPECT_THROW(observable->removePath(std::uint64_t{3}), std::out_of_range);
}

TEST_F(ObservableLinks, RemovingTakesTheObserversEntriesAlong) {
    auto const fill = [&] {
        observable->addObserver(*a, 1, NOTIFY, false);
        observable->addObserver(*b, 2, NOTIFY, false);
        observable->addPreObserver(*a, 3, PRE_NOTIFY, false);
    };
    fill();
    observable->rmObserver(*a);
    EXPECT_TRUE(a->watchesNothing());
    EXPECT_FALSE(b->watchesNothing());
    EXPECT_EQ(1U, observable->getNumPrePaths() + observable->getNumPostPaths());

    fill();
    observable->removePath(std::uint64_t{0});
    EXPECT_EQ(0U, observable->getNumPrePaths());
    EXPECT_EQ(0U, a->entryOf(*observable)) << "the other link of that observer stays";

    observable->informRmObservedBy(*a);
    EXPECT_FALSE(a->watchesNothing()) << "only the list was to change";
    EXPECT_EQ(1U, observable->getNumPostPaths());
    a->informRmObserveAll(*observable);
    EXPECT_TRUE(a->watchesNothing());

    observable->detachAll();
    EXPECT_TRUE(b->watchesNothing());
    EXPECT_EQ(0U, observable->getNumPostPaths());
}

TEST_F(ObservableLinks, RemovingALinkRemovesAllThatEqualIt) {
    for (bool const isListed : {false, true}) {
        observable->addObserver(*a, 1, NOTIFY, false);
        observable->addPreObserver(*a, 1, NOTIFY, false);
        observable->addObserver(*a, 1, PRE_NOTIFY, false);
        auto const alone = link(*a, 5, NOTIFY);
        EXPECT_TRUE(observable->removePath(isListed ? observable->getPath(0) : *alone));
        EXPECT_FALSE(observable->removePath(*alone));
        EXPECT_EQ(0U, observable->getNumPrePaths());
        EXPECT_EQ(1U, observable->getNumPostPaths());
        observable->rmObserver(*a);
    }
    auto const alone = link(*a, 5, NOTIFY);
    observable->informRmObservedBy(*alone);
    EXPECT_EQ(0U, observable->getNumPostPaths());
}

TEST_F(ObservableLinks, AReadyLinkGetsItsNewOwner) {
    auto const other = RecordingObservable::make();
    EXPECT_EQ(Observable::Added,
              observable->addObserver(std::make_unique<ObserverPath>(*other, *a, short{1}, NOTIFY), true));
    EXPECT_EQ(0U, a->entryOf(*observable));
    observable->getPath(0).deactivate();
    EXPECT_TRUE(a->watchesNothing());
}

TEST_F(ObservableLinks, AnObservableWithoutOwnerTakesNoActiveLink) {
    RecordingObservable onStack;
    EXPECT_THROW(onStack.addObserver(*a, 1, NOTIFY, false), std::bad_weak_ptr);
    EXPECT_EQ(0U, onStack.getNumPostPaths()) << "the link was taken out again";
    EXPECT_EQ(Observable::AddedInactive, onStack.addObserver("/nobody", 1, NOTIFY, false));
    onStack.tell();
    EXPECT_THROW(onStack.detachAll(), std::bad_weak_ptr);
    EXPECT_THROW(a->informRmObserve(onStack), std::bad_weak_ptr);
}

TEST_F(ObservableLinks, WhoeverEndsFirstIsForgottenByTheOther) {
    observable->addObserver(*a, 1, NOTIFY, false);
    observable->addPreObserver(*a, 1, PRE_NOTIFY, false);
    observable->getPath(0).deactivate();
    auto const free = link(*a, 1, NOTIFY);
    a.reset();
    EXPECT_EQ(0U, observable->getNumPrePaths() + observable->getNumPostPaths());
    EXPECT_FALSE(free->isActive());
    EXPECT_EQ(std::nullopt, free->getPath());
    EXPECT_FALSE(free->lookupObserver());

    for (int i = 0; i < 40; ++i) { // above the length at which an index is kept
        auto const one = RecordingObservable::make();
        one->addObserver(*b, 1, NOTIFY, false);
        observable->addObserver("/nobody" + std::to_string(i), 1, NOTIFY, false);
        observable->addObserver(*b, static_cast<short>(i), NOTIFY, false);
    }
    EXPECT_EQ(0U, b->entryOf(*observable)) << "the entries of those that ended are gone";
    observable.reset();
    EXPECT_TRUE(b->watchesNothing());
}

TEST_F(ObservableLinks, AnUnresolvedLinkBecomesActiveWhenItsPathLeadsSomewhere) {
    EXPECT_EQ(Observable::AddedInactive, observable->addObserver("x", 5, NOTIFY, false));
    observable->addObserver(*b, 1, NOTIFY, false);
    EXPECT_FALSE(observable->updateObserverLists(false));
    observable->tell();
    EXPECT_EQ((Log{"b"}), log);
    observable->known["x"] = a;
    EXPECT_TRUE(observable->updateObserverLists(false));
    log.clear();
    observable->tell();
    EXPECT_EQ((Log{"a", "b"}), log);
    EXPECT_EQ(0U, a->entryOf(*observable));
}

TEST_F(ObservableLinks, LinksThatBecomeEqualBecomeOne) {
    observable->known.clear();
    observable->addObserver("x", 5, NOTIFY, false);
    observable->addObserver("y", 6, NOTIFY, false);
    observable->addObserver(*b, 7, NOTIFY, false);
    observable->known = {{"x", a}, {"y", a}};
    EXPECT_TRUE(observable->updateObserverLists(false));
    EXPECT_EQ(2U, observable->getNumPostPaths()) << "two paths led to one observer";
    EXPECT_EQ(0U, a->entryOf(*observable));
    observable->getPath(observable->lookupPath(*link(*b, 1, NOTIFY))).setObserver(*a, true);
    EXPECT_EQ(1U, observable->getNumPostPaths());
    EXPECT_TRUE(b->watchesNothing());
    EXPECT_EQ(0U, a->entryOf(*observable));
    observable->tell();
    EXPECT_EQ((Log{"a"}), log);
}

TEST_F(ObservableLinks, ALinkThatGetsTheActionOfItsTwinGoes) {
    observable->addObserver(*a, 1, NOTIFY, false);
    observable->addObserver(*a, 2, PRE_NOTIFY, false);
    EXPECT_EQ(1U, a->entryOf(*observable));
    observable->getPath(1).setAction("Notify");
    EXPECT_EQ(1U, observable->getNumPostPaths());
    EXPECT_EQ(1, observable->getPath(0).getPriority()) << "the one that was there stays";
    EXPECT_EQ(0U, a->entryOf(*observable));
}

TEST_F(ObservableLinks, DetachingEndsAlsoWhenAnObserverComesBackEachTime) {
    a->detached = [&] { observable->addObserver(*a, 1, NOTIFY, false); };
    b->detached = [&] { a.reset(); };
    observable->addPreObserver(*b, 1, PRE_NOTIFY, false);
    observable->addPreObserver(*a, 2, PRE_NOTIFY, false);
    observable->addObserver(*a, 1, NOTIFY, false);
    observable->addObserver("/nobody", 1, NOTIFY, false);
    auto const c = RecordingObserver::make("c", log);
    c->detached = [&] { observable->addObserver(*c, 1, NOTIFY, false); };
    observable->addObserver(*c, 1, NOTIFY, false);
    observable->addNotifyInfo(std::make_shared<ObserverInfo>());
    observable->detachAll();
    EXPECT_EQ(0U, observable->getNumPrePaths() + observable->getNumPostPaths());
    EXPECT_TRUE(b->watchesNothing() && c->watchesNothing());
    EXPECT_EQ(nullptr, a);
    EXPECT_EQ(nullptr, observable->copyNotifyInfos());
}

TEST_F(ObservableLinks, CopiesArePersistentInactiveAndInOrder) {
    struct Row {
        char const* path;
        short priority;
        std::uint64_t action;
        bool temporary;
        bool copied;
    };
    Row const rows[] = {{"/p", 2, NOTIFY, false, true}, {"/q", 1, NOTIFY, false, true},
                        {"/t", 1, NOTIFY, true, false}, {"/z", 0, NOTIFY, false, false},
                        {"/n", 1, 4711, false, false},  {"/r", 1, PRE_NOTIFY, false, true}};
    std::vector<std::string> expected;
    for (bool const isPre : {true, false})
        for (Row const& row : rows) {
            isPre ? observable->addPreObserver(row.path, row.priority, row.action, row.temporary)
                  : observable->addObserver(row.path, row.priority, row.action, row.temporary);
            if (row.copied && row.priority == 1)
                expected.push_back(row.path);
        }
    observable->addObserver(*a, 3, NOTIFY, false);
    observable->addObserver(*b, 3, NOTIFY, false); // has no object path
    auto const copy =
        std::make_shared<RecordingObservable>(std::optional(std::cref<Observable>(*observable)));
    ASSERT_EQ(3U, copy->getNumPrePaths());
    ASSERT_EQ(4U, copy->getNumPostPaths());
    std::vector<std::string> paths;
    for (std::uint64_t i = 0; i < 7; ++i) {
        EXPECT_FALSE(copy->getPath(i).isActive());
        if (copy->getPath(i).getPriority() == 1)
            paths.push_back(*copy->getPath(i).getPath());
    }
    EXPECT_EQ(expected, paths);
    EXPECT_EQ(0U, a->entryOf(*observable));
    EXPECT_FALSE(copy->updateObserverLists(true));
    EXPECT_EQ(1U, a->entryOf(*copy)) << "what a reference names becomes active";
    EXPECT_EQ(1, copy->copyFrom(*copy));
    EXPECT_EQ(7U, copy->getNumPrePaths() + copy->getNumPostPaths());
}

} // namespace
