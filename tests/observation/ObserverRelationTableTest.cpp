// SPDX-License-Identifier: MIT
#include "observation/ObservationAccess.h"
#include "observation/ObservationFixture.h"

#include <AttributeContainer/ObserverRelationTable.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Relations : ObservationTest {
    void SetUp() override { observable->addObserver(*a, 1, NOTIFY, false); }
    static std::uint64_t exchange(Observable& one) {
        return ObservationAccess::exchangePtr(one, *ObservationAccess::relationTable());
    }
};

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
