// SPDX-License-Identifier: MIT
#include "foundation/PerThread.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

using namespace Zorvan::AttributeContainer;

namespace {

struct State {
    static inline int alive = 0;
    int value = 7;
    State() { ++alive; }
    ~State() { --alive; }
};

TEST(PerThread, EachThreadHasItsOwnInstanceUntilItEnds) {
    using Local = PerThread<State>;
    EXPECT_EQ(Local::peek(), nullptr);
    Local::get().value = 1;
    std::thread([] {
        EXPECT_EQ(Local::peek(), nullptr);
        EXPECT_EQ(Local::get().value, 7);
        EXPECT_EQ(State::alive, 2);
    }).join();
    EXPECT_EQ(State::alive, 1);
    EXPECT_EQ(Local::get().value, 1);
}

struct AsksLate {
    using Local = PerThread<int>;
    static inline std::optional<int> seen;
    ~AsksLate() {
        if (Local::peek())
            return;
        static int* late = nullptr; // keeps what is never freed in sight of leak checkers
        late = &Local::get();
        seen = ++*late;
    }
};

TEST(PerThread, ThreadThatAsksAfterItsInstanceWentGetsANewOne) {
    std::thread([] {
        static thread_local AsksLate user; // made before the state, so destroyed after it
        (void)user;
        AsksLate::Local::get() = 8;
    }).join();
    EXPECT_EQ(AsksLate::seen, 1);
}

} // namespace
