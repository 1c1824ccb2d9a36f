// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Object.h>

#include <atomic>
#include <functional>
#include <memory>
#include <span>
#include <thread>

namespace Zorvan::AttributeContainer::Testing {

/// A piece of work that expects what it finds, on trees of its own. The number tells those that run at the
/// same time apart.
struct Activity {
    char const* name;
    void (*act)(unsigned number);
};

/// Everything that the library does for a program.
std::span<Activity const> activities();

/// A tree with children, fields, links of every kind and an observer of the application, which counts.
std::shared_ptr<Object> makeTree(unsigned number);
/// Changes, asks, copies and writes a tree of `makeTree` and leaves it as it was.
void useTree(Object& tree);

/// Runs a function on so many threads, with the numbers from 0 on, as nearly at once as can be.
void onThreads(unsigned numThreads, std::function<void(unsigned)> const& act);

/// Where so many threads wait for each other, again and again. Who slept here would wake up one after the
/// other; and MinGW's std::barrier loses wake-ups.
class Meeting {
public:
    explicit Meeting(unsigned numThreads) : numInvited_(numThreads) {}
    void arriveAndWait() {
        unsigned const end = (numArrived_++ / numInvited_ + 1) * numInvited_;
        while (numArrived_ < end)
            std::this_thread::yield();
    }

private:
    unsigned const numInvited_;
    std::atomic<unsigned> numArrived_ = 0;
};

/// How often what depends on chance is tried: KX_THREAD_ROUNDS of the environment, a few times without it.
unsigned numRounds();

} // namespace Zorvan::AttributeContainer::Testing
