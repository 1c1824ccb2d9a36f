// SPDX-License-Identifier: MIT
#include "observation/ObservationFixture.h"

#include <algorithm>
#include <chrono>

using namespace Zorvan::AttributeContainer;
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

using Step = void (*)(Crowd& crowd, std::size_t i);

/// Time of one step after a preparation: the best of several tries, because other programs run meanwhile.
double timeOfOne(int count, Step prepare, Step step) {
    std::chrono::duration<double> best = std::chrono::hours(1);
    for (int attempt = 0; attempt < 3; ++attempt) {
        Crowd crowd(count);
        for (std::size_t i = 0; i < crowd.observers.size(); ++i)
            prepare(crowd, i);
        auto const start = std::chrono::steady_clock::now();
        for (std::size_t i = 0; i < crowd.observers.size(); ++i)
            step(crowd, i);
        best = std::min<std::chrono::duration<double>>(best, std::chrono::steady_clock::now() - start);
    }
    return best.count() / count;
}

TEST(LinkCost, OneLinkAmongTenThousandCostsLittleMoreThanAmongAThousand) {
    struct Row {
        char const* what;
        Step prepare, step;
    };
    Step const nothing = [](Crowd&, std::size_t) {};
    Step const connect = [](Crowd& c, std::size_t i) {
        c.observable->addObserver(*c.observers[i], static_cast<short>(i * 7919 % 101), NOTIFY, false);
    };
    Step const watch = [](Crowd& c, std::size_t i) {
        c.observables[i]->addObserver(*c.observer, 1, NOTIFY, false);
    };
    Row const rows[] = {
        {"connect", nothing, connect},
        {"disconnect", connect, [](Crowd& c, std::size_t i) { c.observable->rmObserver(*c.observers[i]); }},
        {"destroy", connect, [](Crowd& c, std::size_t i) { c.observers[i].reset(); }},
        {"watch", nothing, watch},
        {"destroy what is watched", watch,
         [](Crowd& c, std::size_t i) { c.observables[i * 7919 % c.observables.size()].reset(); }},
    };
    // With ten times as many links, one of them may cost a few times as much; a search through all would cost
    // ten times, each time. One good comparison is enough.
    for (auto const& [what, prepare, step] : rows) {
        int attempts = 5;
        while (attempts > 0 && timeOfOne(10'000, prepare, step) > 6 * timeOfOne(1'000, prepare, step))
            --attempts;
        EXPECT_GT(attempts, 0) << what;
    }
}

} // namespace
