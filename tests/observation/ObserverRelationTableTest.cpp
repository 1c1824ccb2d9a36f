// SPDX-License-Identifier: MIT
#include "observation/ObservationAccess.h"
#include "observation/RecordingObserver.h"

#include <AttributeContainer/ObserverRelationTable.h>

#include <gtest/gtest.h>

#include <thread>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Relations : testing::Test {
    Log log;
    std::shared_ptr<RecordingObservable> source = RecordingObservable::make();
    std::shared_ptr<RecordingObserver> original = RecordingObserver::make("original", log, "/original");
    std::shared_ptr<RecordingObserver> copy = RecordingObserver::make("copy", log, "/copy");

    void SetUp() override { source->addObserver(*original, 1, NOTIFY, false); }

    std::shared_ptr<RecordingObservable> copyOfSource() {
        return std::make_shared<RecordingObservable>(std::optional(std::cref<Observable>(*source)));
    }
    static std::uint64_t exchange(Observable& observable) {
        return ObservationAccess::exchangePtr(observable, *ObservationAccess::relationTable());
    }
};

TEST_F(Relations, InactiveLinksAreRedirectedToTheFirstCopy) {
    auto const outside = RecordingObserver::make("outside", log, "/outside");
    source->addPreObserver(*outside, 1, PRE_NOTIFY, false);
    PreserveObserverRelation const scope;
    auto const later = RecordingObserver::make("later", log);
    auto const target = copyOfSource();
    EXPECT_EQ(1, copy->copyFrom(*original));
    later->copyFrom(*original);
    EXPECT_EQ(1U, exchange(*target));
    EXPECT_EQ(0U, exchange(*target)) << "active ones are left alone";
    EXPECT_EQ(0U, copy->entryOf(*target));
    EXPECT_EQ(NOT_FOUND, original->entryOf(*target));
    EXPECT_TRUE(later->watchesNothing());
    target->tell();
    EXPECT_EQ((Log{"copy"}), log);
    target->updateObserverLists(true);
    target->ask();
    EXPECT_EQ((Log{"copy", "outside?"}), log);
}

TEST_F(Relations, LastAsLongAsTheOutermostScopeOfTheThread) {
    EXPECT_EQ(nullptr, ObservationAccess::relationTable());
    {
        PreserveObserverRelation const outer;
        {
            PreserveObserverRelation const inner;
            copy->copyFrom(*original);
        }
        std::thread([] { EXPECT_EQ(nullptr, ObservationAccess::relationTable()); }).join();
        EXPECT_EQ("ObserverRelationTableObserver", ObservationAccess::relationTable()->getName());
        EXPECT_EQ(1U, exchange(*copyOfSource()));
    }
    EXPECT_EQ(nullptr, ObservationAccess::relationTable());
    PreserveObserverRelation const next;
    EXPECT_EQ(0U, exchange(*copyOfSource()));
}

TEST_F(Relations, ObserversThatWatchNothingOrEndAreNotInTheTable) {
    PreserveObserverRelation const scope;
    auto const idle = RecordingObserver::make("idle", log, "/idle");
    source->addObserver("idle", 1, NOTIFY, false);
    source->known["idle"] = idle;
    source->getPath(0).lookupObserver(); // a reference, but inactive
    copy->copyFrom(*idle);
    EXPECT_EQ(0U, exchange(*copyOfSource()));

    copy->copyFrom(*original);
    copy.reset();
    EXPECT_EQ(0U, exchange(*copyOfSource()));
    copy = RecordingObserver::make("copy", log);
    copy->copyFrom(*original);
    auto const target = copyOfSource();
    original.reset();
    EXPECT_EQ(0U, exchange(*target));
    EXPECT_EQ(1U, target->getNumPostPaths()) << "the link to the original went with it";
}

} // namespace
