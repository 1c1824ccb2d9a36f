// SPDX-License-Identifier: MIT
#include "CostFixture.h"
#include "observation/ObservationFixture.h"

using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// An observable with many observers, and an observer with many observables.
struct Crowd {
    explicit Crowd(int count) {
        for (int i = 0; i < count; ++i) {
            observers.push_back(RecordingObserver::make("o", log));
            observables.push_back(RecordingObservable::make());
        }
    }
    Log log;
    std::shared_ptr<RecordingObservable> observable = RecordingObservable::make();
    std::vector<std::shared_ptr<RecordingObserver>> observers;
    std::shared_ptr<RecordingObserver> observer = RecordingObserver::make("o", log);
    std::vector<std::shared_ptr<RecordingObservable>> observables;
};

void nothing(Crowd&, int) {}
void connect(Crowd& c, int i) {
    c.observable->addObserver(*c.observers[i], static_cast<short>(i * 7919 % 101), NOTIFY, false);
}
void watch(Crowd& c, int i) { c.observables[i]->addObserver(*c.observer, 1, NOTIFY, false); }

TEST(LinkCost, OfOneLinkHardlyGrowsWithTheirNumber) {
    expectCostHardlyGrows<Crowd>({
        {"connect", nothing, connect},
        {"disconnect", connect, [](Crowd& c, int i) { c.observable->rmObserver(*c.observers[i]); }},
        {"destroy", connect, [](Crowd& c, int i) { c.observers[i].reset(); }},
        {"watch", nothing, watch},
        {"destroy what is watched", watch,
         [](Crowd& c, int i) { c.observables[i * 7919UL % c.observables.size()].reset(); }},
    });
}

} // namespace
