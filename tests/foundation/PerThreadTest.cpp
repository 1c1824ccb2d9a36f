// SPDX-License-Identifier: MIT
#include "foundation/PerThread.h"

#include <gtest/gtest.h>

#include <memory>
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

int numMade = 0;
void* lateInstance = nullptr; // keeps what is never freed in sight of leak checkers

template <int number>
struct Neighbour {
    Neighbour() { ++numMade; }
    ~Neighbour() {
        if (numMade == 2)
            lateInstance = &PerThread<Neighbour<1 - number>>::get();
    }
};

TEST(PerThread, ThreadThatAsksAfterItsInstanceWentGetsANewOne) {
    std::thread([] {
        EXPECT_NE(&PerThread<Neighbour<0>>::get(), nullptr);
        EXPECT_NE(&PerThread<Neighbour<1>>::get(), nullptr);
    }).join();
    EXPECT_EQ(numMade, 3) << "whichever went last has asked for the other";
}

} // namespace
