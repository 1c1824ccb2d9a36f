// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <initializer_list>

/// Seconds that the program has run. They are those of the processor where `std::clock` tells them finely
/// enough: other programs then do not count.
inline double secondsRun() {
    if constexpr (CLOCKS_PER_SEC >= 1'000'000)
        return static_cast<double>(std::clock()) / static_cast<double>(CLOCKS_PER_SEC);
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Steps that are done for each of many members, the first ones in preparation.
template <class State>
struct CostRow {
    using Step = void (*)(State& state, int i);
    char const* what;
    Step prepare, step;

    /// The time of one step: the best of several tries, because other programs use the caches meanwhile.
    double timeOfOne(int count) const {
        double best = 3600;
        for (int attempt = 0; attempt < 3; ++attempt) {
            State state(count);
            for (int i = 0; i < count; ++i)
                prepare(state, i);
            double const start = secondsRun();
            for (int i = 0; i < count; ++i)
                step(state, i);
            best = std::min(best, secondsRun() - start);
        }
        return best / count;
    }
};

/// With fifteen times as many members, one of them may cost a few times as much, since they no longer fit the
/// caches; a search through all would cost fifteen times, each time. One good comparison is enough.
template <class State>
void expectCostHardlyGrows(std::initializer_list<CostRow<State>> rows) {
    for (auto const& row : rows) {
        int attempts = 5;
        while (attempts > 0 && row.timeOfOne(7'500) > 6 * row.timeOfOne(500))
            --attempts;
        EXPECT_GT(attempts, 0) << row.what;
    }
}
