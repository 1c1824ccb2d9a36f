// SPDX-License-Identifier: MIT
#include "threads/Activities.h"

#include <gtest/gtest.h>

namespace Zorvan::AttributeContainer::Testing {

TEST(SeparateTrees, OfDifferentThreadsHaveNothingToDoWithEachOther) {
    constexpr unsigned numThreads = 4;
    auto const acts = activities();
    onThreads(numThreads, [&](unsigned thread) {
        for (unsigned round = 0; round < numRounds(); ++round)
            for (std::size_t i = 0; i < acts.size(); ++i) {
                // The threads are out of step, so that each activity meets each other one, and itself.
                auto const& [name, act] = acts[(i * (round % 3 + 1) + thread * round) % acts.size()];
                SCOPED_TRACE(name);
                act(thread);
            }
    });
}

} // namespace Zorvan::AttributeContainer::Testing
