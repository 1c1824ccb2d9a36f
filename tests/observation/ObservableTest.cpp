// SPDX-License-Identifier: MIT
#include "observation/ObservationFixture.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct ObservableLinks : ObservationTest {
    /// Numbers of pre and post links, and of the entries of a and of b.
    using State = std::vector<std::uint64_t>;
    State state() {
        return {observable->getNumPrePaths(), observable->getNumPostPaths(),
                a ? a->entryOf(*observable) + 1 : 0, b->entryOf(*observable) + 1};
    }
};

TEST_F(ObservableLinks, RemovingTakesTheObserversEntriesAlong) {
    struct Row {
        void (*remove)(ObservableLinks& test, ObserverPath& equal);
        State left;
    };
    Row const rows[] = {
        {[](auto& t, auto&) { t.observable->rmObserver(*t.a); }, {0, 1, 0, 1}},
        {[](auto& t, auto&) { t.observable->removePath(std::uint64_t{0}); }, {0, 3, 2, 1}},
        {[](auto& t, auto&) { t.observable->informRmObservedBy(*t.a); }, {0, 1, 3, 1}},
        {[](auto& t, auto&) { t.a->informRmObserveAll(*t.observable); }, {1, 3, 0, 1}},
        {[](auto& t, auto&) { t.observable->detachAll(); }, {0, 0, 0, 0}},
        {[](auto& t, auto& equal) { t.observable->removePath(equal); }, {0, 2, 1, 1}},
        {[](auto& t, auto&) { EXPECT_TRUE(t.observable->removePath(t.observable->getPath(0))); },
         {0, 2, 1, 1}},
        {[](auto& t, auto& equal) { t.observable->informRmObservedBy(equal); }, {0, 2, 3, 1}},
        {[](auto& t, auto&) { t.a.reset(); }, {0, 1, 0, 1}},
        {[](auto& t, auto&) { t.observable->getPath(1).setAction("PreNotify"); }, {1, 2, 2, 1}},
        {[](auto& t, auto&) { t.observable->getPath(3).setObserver(*t.a, true); }, {1, 2, 3, 0}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(&row - rows);
        observable = RecordingObservable::make();
        a = RecordingObserver::make("a", log, "/a");
        observable->addPreObserver(*a, 3, NOTIFY, false);
        observable->addObserver(*a, 1, NOTIFY, false);
        observable->addObserver(*a, 2, PRE_NOTIFY, false);
        observable->addObserver(*b, 3, NOTIFY, false);
        ObserverPath equal = link(*a, 5, NOTIFY);
        row.remove(*this, equal);
        EXPECT_EQ(row.left, state());
        EXPECT_EQ(row.left[2] > 0, a && !a->watchesNothing());
    }
}

TEST_F(ObservableLinks, HalfOfAddingAndRemovingConcernsTheListOnly) {
    auto const made = [&] { return std::make_unique<ObserverPath>(*observable, *a, short{1}, NOTIFY); };
    EXPECT_NE(nullptr, observable->informAddPostObservedBy(made(), true));
    EXPECT_EQ(nullptr, observable->informAddPostObservedBy(made(), true)) << "there is one";
    EXPECT_NE(nullptr, observable->informAddPreObservedBy(made(), false));
    EXPECT_EQ((State{1, 1, 0, 0}), state());
    observable->informRmObservedBy(*a);
    EXPECT_EQ((State{0, 0, 0, 0}), state());
}

TEST_F(ObservableLinks, WhoeverEndsFirstIsForgottenByTheOther) {
    observable->addPreObserver(*a, 1, PRE_NOTIFY, false);
    observable->getPath(0).deactivate();
    ObserverPath free = link(*a, 1, NOTIFY);
    a.reset();
    EXPECT_EQ((State{0, 0, 0, 0}), state()) << "also by an inactive link";
    EXPECT_FALSE(free.isActive() || free.getPath() || free.lookupObserver());
    for (int i = 0; i < 40; ++i) { // above the length at which an index is kept
        auto const one = RecordingObservable::make();
        one->addObserver(*b, 1, NOTIFY, false);
        observable->addObserver("/nobody" + std::to_string(i), 1, NOTIFY, false);
        observable->addObserver(*b, static_cast<short>(i), NOTIFY, false);
    }
    EXPECT_EQ((State{0, 41, 0, 1}), state()) << "the entries of those that ended are gone";
    observable.reset();
    EXPECT_TRUE(b->watchesNothing());
}

TEST_F(ObservableLinks, PathsThatLeadSomewhereBecomeActiveAndEqualOnesBecomeOne) {
    EXPECT_EQ(Observable::AlreadyPresent, observable->addObserver(nullptr, true));
    EXPECT_EQ(Observable::AddedInactive, observable->addObserver("x", 5, NOTIFY, false));
    observable->addObserver("y", 6, NOTIFY, false);
    observable->addObserver(*b, 1, NOTIFY, false);
    EXPECT_FALSE(observable->updateObserverLists(false));
    EXPECT_EQ("b", told());
    observable->known = {{"x", a}, {"y", a}};
    EXPECT_TRUE(observable->updateObserverLists(false));
    EXPECT_EQ("ab", told());
    EXPECT_EQ((State{0, 2, 1, 1}), state());
    EXPECT_EQ(Observable::AlreadyPresent, observable->addObserver("/a", 1, NOTIFY, false));
}

TEST_F(ObservableLinks, APathIsTheObserverOfThisPathAlsoAmongMany) {
    for (int const count : {1, 40}) { // above the length at which an index is kept
        observable = RecordingObservable::make();
        for (int i = 0; i < count; ++i)
            observable->addObserver("/nobody" + std::to_string(i), 1, NOTIFY, false);
        EXPECT_EQ(Observable::AddedInactive, observable->addObserver("/nobody0", 1, PRE_NOTIFY, false));
        a->objectPath = "/nobody0";
        EXPECT_EQ(Observable::AlreadyPresent, observable->addObserver(*a, 1, NOTIFY, false)) << count;
    }
}

TEST_F(ObservableLinks, DetachingEndsAlsoWhenAnObserverComesBackEachTimeOrThrows) {
    auto const c = RecordingObserver::make("c", log);
    for (bool const throws : {false, true}) {
        a = RecordingObserver::make("a", log, "/a");
        a->detached = [&] { observable->addObserver(*a, 1, NOTIFY, false); };
        b->detached = [&] { a.reset(); };
        c->detached = [&, throws] {
            observable->addObserver(*c, 1, NOTIFY, false);
            if (throws)
                throw std::runtime_error("detached");
        };
        observable->addPreObserver(*b, 1, PRE_NOTIFY, false);
        observable->addPreObserver(*a, 2, PRE_NOTIFY, false);
        observable->addObserver(*c, 1, NOTIFY, false);
        observable->addObserver(*c, 2, PRE_NOTIFY, false);
        observable->addObserver("/nobody", 1, NOTIFY, false);
        observable->addNotifyInfo(std::make_shared<ObserverInfo>());
        EXPECT_EQ(throws ? "!" : "", logged([&] { observable->detachAll(); }));
        EXPECT_EQ(nullptr, a);
        EXPECT_EQ((State{0, 0, 0, 0}), state());
        EXPECT_TRUE(c->watchesNothing());
        EXPECT_EQ(nullptr, observable->copyNotifyInfos());
    }
}

} // namespace
