// SPDX-License-Identifier: MIT
#include "foundation/PerThread.h"
#include "foundation/NeverDestroyed.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

using namespace Zorvan::AttributeContainer;

namespace {

struct Counted {
    static inline int alive = 0;
    int value = 0;
    Counted() { ++alive; }
    Counted(Counted const&) = delete;
    ~Counted() { --alive; }
};

TEST(PerThread, EachThreadHasItsOwnInstanceUntilItEnds) {
    struct State : Counted {};
    using Local = PerThread<State>;
    EXPECT_EQ(Local::peek(), nullptr);
    Local::get().value = 1;
    std::thread([] {
        EXPECT_EQ(Local::peek(), nullptr);
        EXPECT_EQ(Local::get().value, 0);
        EXPECT_EQ(Local::peek(), &Local::get());
        EXPECT_EQ(State::alive, 2);
    }).join();
    EXPECT_EQ(State::alive, 1);
    EXPECT_EQ(Local::get().value, 1);
}

struct LateState {
    int value = 7;
};
int seenLate = 0;
bool wasGone = false;

struct AsksLate {
    void touch() {}
    ~AsksLate() {
        wasGone = PerThread<LateState>::peek() == nullptr;
        static LateState* late = nullptr; // keeps what is never freed in sight of leak checkers
        late = &PerThread<LateState>::get();
        seenLate = late->value;
    }
};

TEST(PerThread, ThreadThatAsksAfterItsInstanceWentGetsANewOne) {
    std::thread([] {
        static thread_local AsksLate user; // made before the state, so destroyed after it
        user.touch();
        PerThread<LateState>::get().value = 8;
    }).join();
    EXPECT_TRUE(wasGone);
    EXPECT_EQ(seenLate, 7);
}

int destroyed = 0;
struct Noted {
    explicit Noted(std::string initial) : text(std::move(initial)) {}
    ~Noted() { ++destroyed; }
    std::string text;
};

constinit NeverDestroyed<Noted> greetingStorage;
constinit Noted const& greeting = greetingStorage.get();
std::string const copyOfGreeting = greeting.text;
[[gnu::init_priority(101)]] NeverDestroyedFill const fill([] {
    greetingStorage.emplace("hello, static world");
});

TEST(NeverDestroyed, ObjectIsThereBeforeOrdinaryStaticInitialisers) {
    EXPECT_EQ(copyOfGreeting, "hello, static world");
    {
        NeverDestroyed<Noted> local;
        local.emplace("short");
    }
    EXPECT_EQ(destroyed, 0);
}

} // namespace
