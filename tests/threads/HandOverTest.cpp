// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"
#include "containers/DocumentFixture.h"
#include "threads/Activities.h"

#include <condition_variable>
#include <future>
#include <mutex>
#include <queue>
#include <thread>

namespace Zorvan::AttributeContainer::Testing {

namespace {

/// Where threads leave trees for another one.
class Desk {
public:
    void put(std::shared_ptr<Object> tree) {
        std::lock_guard const lock(mutex_);
        trees_.push(std::move(tree));
        filled_.notify_one();
    }
    std::shared_ptr<Object> take() {
        std::unique_lock lock(mutex_);
        filled_.wait(lock, [&] { return !trees_.empty(); });
        auto tree = std::move(trees_.front());
        trees_.pop();
        return tree;
    }

private:
    std::mutex mutex_;
    std::condition_variable filled_;
    std::queue<std::shared_ptr<Object>> trees_;
};

struct CountedInfo : ObserverInfo {
    explicit CountedInfo(std::atomic<int>& number) : counter(number) {
        setExpire(false);
        ++counter;
    }
    CountedInfo(CountedInfo const&) = delete;
    CountedInfo& operator=(CountedInfo const&) = delete;
    ~CountedInfo() override { --counter; }
    std::atomic<int>& counter;
};

/// Everything that a thread may leave behind with a tree.
void leaveTraces(Object& tree, std::atomic<int>& numInfos) {
    for (auto const& name : {"follower", "number"})
        tree.getAttr(name).lock()->addNotifyInfo(std::make_shared<CountedInfo>(numInfos));
    tree.addAttrContInfo(tree.inqObject("/tank"));
}

} // namespace

TEST(HandOver, TreeIsUsedByOneThreadAfterTheOtherAndDestroyedByTheLast) {
    constexpr unsigned numThreads = 4;
    for (unsigned round = 0; round < numRounds(); ++round) {
        std::array<Desk, numThreads> desks;
        onThreads(numThreads, [&](unsigned thread) {
            // Every tree makes the round of all threads.
            auto tree = makeTree(thread);
            for (unsigned stop = 0; stop < numThreads; ++stop) {
                useTree(*tree);
                desks[(thread + 1) % numThreads].put(std::move(tree));
                tree = desks[thread].take();
            }
        });
    }
}

TEST(HandOver, WhatAThreadLeavesBehindGoesWithIt) {
    for (unsigned round = 0; round < numRounds(); ++round) {
        std::atomic<int> numInfos = 0;
        Desk desk;
        std::thread first([&] {
            for (int i = 0; i < 20; ++i) {
                auto const tree = makeTree(1);
                useTree(*tree);
                leaveTraces(*tree, numInfos);
                desk.put(tree);
            }
            desk.put(nullptr);
        });
        while (auto const tree = desk.take()) {
            // The first thread may hold it still; who comes last destroys it.
            EXPECT_TRUE(tree->lookupAttrContInfo().expired());
            EXPECT_FALSE(tree->getAttr("follower").lock()->copyNotifyInfos());
            useTree(*tree);
        }
        first.join();
        EXPECT_EQ(0, numInfos);
    }
}

TEST(HandOver, LastReferenceMayGoOnAnyThread) {
    for (unsigned round = 0; round < 20 * numRounds(); ++round) {
        auto tree = makeTree(1);
        useTree(*tree);
        std::vector<std::shared_ptr<Object>> references(4, tree);
        tree.reset();
        onThreads(4, [&](unsigned thread) { references[thread].reset(); });
    }
}

TEST(HandOver, ErrorsShareTheirCauses) {
    for (unsigned round = 0; round < 20 * numRounds(); ++round) {
        Result cause = Object::create()->setName("not a name", 0);
        for (int i = 0; i < 3; ++i) {
            auto outer = Object::create()->setName("no name either", 0);
            outer->addNested(std::move(cause));
            cause = std::move(outer);
        }
        std::array<std::shared_ptr<ErrorHandling::ErrorBase>, 4> errors;
        for (auto& error : errors)
            error = cause->clone();
        cause.reset();
        onThreads(4, [&](unsigned thread) {
            EXPECT_EQ("InvalidName(InvalidName(InvalidName(InvalidName)))", verdict(*errors[thread]));
            errors[thread].reset();
        });
    }
}

TEST(HandOver, ResultsOfAChangeCanBeAwaitedOnAnotherThread) {
    Watched watched;
    watched.refuseNine();
    for (unsigned round = 0; round < numRounds(); ++round)
        for (auto const& [value, numPre, isTold] : {std::tuple{8, 1U, true}, std::tuple{9, 1U, false}}) {
            auto pre = std::make_unique<std::promise<Attribute::NotificationResults>>();
            auto post = std::make_unique<std::promise<Attribute::NotificationResults>>();
            auto before = pre->get_future(), after = post->get_future();
            std::thread waiting([&, numAsked = numPre, isStored = isTold] {
                EXPECT_EQ(numAsked, before.get().size());
                try {
                    EXPECT_EQ(1U, after.get().size());
                    EXPECT_TRUE(isStored);
                } catch (std::future_error const&) {
                    EXPECT_FALSE(isStored);
                }
            });
            watched.attribute->setValue(value, nullptr, std::move(pre), std::move(post));
            waiting.join();
        }
}

} // namespace Zorvan::AttributeContainer::Testing
