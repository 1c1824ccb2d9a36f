// SPDX-License-Identifier: MIT
#include "threads/Activities.h"

#include <AttributeContainer/ActionContainer.h>
#include <AttributeContainer/FieldFactory.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <iostream>

namespace Zorvan::AttributeContainer::Testing {

namespace {

/// What is made when it is first asked for, and is the same for every thread.
constexpr struct {
    char const* name;
    void const* (*get)();
} singletons[] = {
    {"actions", [] { return static_cast<void const*>(ActionContainer::the()); }},
    {"action group", [] { return static_cast<void const*>(ActionDefinition::the().get()); }},
    {"factory", [] { return static_cast<void const*>(FieldFactory::the().get()); }},
};

/// In a process of its own, in which nothing was used before.
template <class Act>
void expectWellFromSeveralThreads(char const* name, Act const& act) {
    EXPECT_EXIT(
        {
            onThreads(4, act);
            // Nobody else tells of what failed in that process.
            auto const& result = *testing::UnitTest::GetInstance()->current_test_info()->result();
            for (int i = 0; i < result.total_part_count(); ++i)
                std::cerr << result.GetTestPartResult(i).message() << '\n';
            std::exit(result.Failed());
        },
        testing::ExitedWithCode(0), "")
        << name;
}

} // namespace

TEST(FirstUse, OfWhatIsMadeLaterMayComeFromSeveralThreadsAtOnce) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (unsigned round = 0; round < (numRounds() + 9) / 10; ++round) {
        for (auto const& [name, get] : singletons) {
            std::atomic<void const*> found = nullptr;
            expectWellFromSeveralThreads(name, [&found, get = get](unsigned) {
                void const* const mine = get();
                void const* const first = found.exchange(mine, std::memory_order_relaxed);
                EXPECT_TRUE(first == nullptr || first == mine);
            });
        }
        for (auto const& [name, act] : activities())
            expectWellFromSeveralThreads(name, act);
    }
}

} // namespace Zorvan::AttributeContainer::Testing
