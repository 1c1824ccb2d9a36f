// SPDX-License-Identifier: MIT
#include "observation/RecordingObserver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

using Clock = std::chrono::steady_clock;

/// Does something for many observers of one observable, and returns the time for one of them: the best of
/// several tries, because other programs run meanwhile.
template <class Prepare, class Measure>
double timeOfOne(int count, Prepare&& prepare, Measure&& measure) {
    Log log;
    double best = 1e9;
    for (int attempt = 0; attempt < 3; ++attempt) {
        auto const observable = RecordingObservable::make();
        std::vector<std::shared_ptr<RecordingObserver>> observers;
        for (int i = 0; i < count; ++i)
            observers.push_back(RecordingObserver::make("o", log));
        prepare(*observable, observers);
        auto const start = Clock::now();
        measure(*observable, observers);
        best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count() / count);
    }
    return best;
}

// With ten times as many links, one of them may cost a few times as much; a search through all would cost ten
// times, each time. One good comparison is enough: other programs run meanwhile.
template <class TimeOfOne>
bool growsLittle(TimeOfOne&& timeOfOne) {
    for (int attempt = 0; attempt < 5; ++attempt)
        if (timeOfOne(10'000) < 6 * timeOfOne(1'000))
            return true;
    return false;
}

TEST(LinkCost, OneLinkAmongTenThousandCostsLittleMoreThanAmongAThousand) {
    using Observers = std::vector<std::shared_ptr<RecordingObserver>>;
    auto const connect = [](Observable& observable, Observers& observers) {
        for (std::size_t i = 0; i < observers.size(); ++i)
            observable.addObserver(*observers[i], static_cast<short>(i * 7919 % 101), NOTIFY, false);
    };
    auto const nothing = [](Observable&, Observers&) {};
    auto const disconnect = [](Observable& observable, Observers& observers) {
        for (auto const& observer : observers)
            observable.rmObserver(*observer);
    };
    auto const destroy = [](Observable&, Observers& observers) {
        for (auto& observer : observers)
            observer.reset();
    };
    auto const reconnect = [](Observable& observable, Observers& observers) {
        for (auto const& observer : observers) {
            observable.rmObserver(*observer);
            observable.addObserver(*observer, 50, NOTIFY, false);
        }
    };
    EXPECT_TRUE(growsLittle([&](int count) { return timeOfOne(count, nothing, connect); }));
    EXPECT_TRUE(growsLittle([&](int count) { return timeOfOne(count, connect, disconnect); }));
    EXPECT_TRUE(growsLittle([&](int count) { return timeOfOne(count, connect, destroy); }));
    EXPECT_TRUE(growsLittle([&](int count) { return timeOfOne(count, connect, reconnect); }));
}

TEST(LinkCost, OneOfTenThousandObservablesIsForgottenWithoutSearch) {
    Log log;
    auto const run = [&](int count) {
        double best = 1e9;
        for (int attempt = 0; attempt < 3; ++attempt) {
            auto const observer = RecordingObserver::make("o", log);
            std::vector<std::shared_ptr<RecordingObservable>> observables;
            auto const start = Clock::now();
            for (int i = 0; i < count; ++i) {
                observables.push_back(RecordingObservable::make());
                observables.back()->addObserver(*observer, 1, NOTIFY, false);
            }
            for (std::size_t i = 0; i < observables.size(); ++i)
                observables[i * 7919 % observables.size()].reset();
            EXPECT_TRUE(observer->watchesNothing());
            best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count() / count);
        }
        return best;
    };
    EXPECT_TRUE(growsLittle(run));
}

} // namespace
