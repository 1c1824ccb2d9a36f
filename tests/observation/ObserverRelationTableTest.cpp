// SPDX-License-Identifier: MIT
#include "observation/ObservationAccess.h"
#include "observation/ObservationFixture.h"

#include <AttributeContainer/ObserverRelationTable.h>

#include <thread>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Relations : ObservationTest {
    void SetUp() override { observable->addObserver(*a, 1, NOTIFY, false); }
    static std::uint64_t exchange(Observable& one) {
        return ObservationAccess::exchangePtr(one, *ObservationAccess::relationTable());
    }
};

TEST_F(Relations, InactiveLinksAreRedirectedToTheFirstCopy) {
    auto const outside = RecordingObserver::make("x", log, "/x"), later = RecordingObserver::make("l", log);
    observable->addObserver(*outside, 2, NOTIFY, false);
    PreserveObserverRelation const scope;
    auto const target = copyOf(*observable);
    EXPECT_EQ(1, b->copyFrom(*a));
    later->copyFrom(*a);
    EXPECT_EQ(1U, exchange(*target));
    EXPECT_EQ(0U, exchange(*target)) << "active ones are left alone";
    EXPECT_EQ(0U, b->entryOf(*target));
    EXPECT_EQ(NOT_FOUND, a->entryOf(*target));
    EXPECT_TRUE(later->watchesNothing());
    target->updateObserverLists(true);
    EXPECT_EQ("xb", logged([&] { target->tell(); }));
}

TEST_F(Relations, LastAsLongAsTheOutermostScopeOfTheThread) {
    EXPECT_EQ(nullptr, ObservationAccess::relationTable());
    PreserveObserverRelation const outer;
    static_cast<void>(PreserveObserverRelation());
    b->copyFrom(*a);
    std::thread([] { EXPECT_EQ(nullptr, ObservationAccess::relationTable()); }).join();
    EXPECT_EQ(1U, exchange(*copyOf(*observable)));
}

TEST_F(Relations, ObserversThatWatchNothingOrEndAreNotInTheTable) {
    PreserveObserverRelation const scope;
    auto const idle = RecordingObserver::make("idle", log, "/idle");
    observable->addObserver("idle", 1, NOTIFY, false);
    observable->known["idle"] = idle;
    observable->getPath(0).lookupObserver(); // a reference, but inactive
    b->copyFrom(*idle);
    RecordingObserver::make("gone", log)->copyFrom(*a);
    EXPECT_EQ(0U, exchange(*copyOf(*observable)));
    b->copyFrom(*a);
    auto const target = copyOf(*observable);
    a.reset();
    EXPECT_EQ(0U, exchange(*target));
    EXPECT_EQ(1U, target->getNumPostPaths()) << "the link to the original went with it";
}

} // namespace
