// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <initializer_list>

/// Steps that are done for each of many members, the first ones in preparation.
template <class State>
struct CostRow {
    using Step = void (*)(State& state, int i);
    char const* what;
    Step prepare, step;

    /// The time of one step: the best of several tries, because other programs run meanwhile.
    double timeOfOne(int count) const {
        std::chrono::duration<double> best = std::chrono::hours(1);
        for (int attempt = 0; attempt < 3; ++attempt) {
            State state(count);
            for (int i = 0; i < count; ++i)
                prepare(state, i);
            auto const start = std::chrono::steady_clock::now();
            for (int i = 0; i < count; ++i)
                step(state, i);
            best = std::min<std::chrono::duration<double>>(best, std::chrono::steady_clock::now() - start);
        }
        return best.count() / count;
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
