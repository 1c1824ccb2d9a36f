// SPDX-License-Identifier: MIT
#include "foundation/PerThread.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

using namespace Zorvan::AttributeContainer;

namespace {

TEST(PerThread, EachThreadHasItsOwnInstanceUntilItEnds) {
    using Local = PerThread<std::shared_ptr<int>>;
    EXPECT_EQ(Local::peek(), nullptr);
    Local::get() = std::make_shared<int>(1);
    std::weak_ptr<int> other;
    std::thread([&] {
        EXPECT_EQ(Local::peek(), nullptr);
        other = Local::get() = std::make_shared<int>(2);
    }).join();
    EXPECT_TRUE(other.expired());
    EXPECT_EQ(**Local::peek(), 1);
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
