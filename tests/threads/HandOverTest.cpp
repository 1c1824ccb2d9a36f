// SPDX-License-Identifier: MIT
#include "containers/DocumentFixture.h"
#include "threads/Activities.h"

#include <array>
#include <atomic>
#include <future>
#include <thread>

namespace Zorvan::AttributeContainer::Testing {

namespace {

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
        std::array<std::shared_ptr<Object>, numThreads> trees;
        Meeting meeting(numThreads);
        onThreads(numThreads, [&](unsigned thread) {
            trees[thread] = makeTree(thread);
            // Every tree makes the round of all threads.
            for (unsigned stop = 0; stop < numThreads; ++stop) {
                useTree(*trees[(thread + stop) % numThreads]);
                meeting.arriveAndWait();
            }
            trees[(thread + numThreads - 1) % numThreads].reset(); // which it has used last
        });
    }
}

TEST(HandOver, WhatAThreadLeavesBehindGoesWithIt) {
    for (unsigned round = 0; round < numRounds(); ++round) {
        std::atomic<int> numInfos = 0;
        std::array<std::promise<std::shared_ptr<Object>>, 20> trees;
        std::thread first([&] {
            for (auto& promised : trees) {
                auto const tree = makeTree(1);
                useTree(*tree);
                leaveTraces(*tree, numInfos);
                promised.set_value(tree);
            }
        });
        for (auto& promised : trees) {
            // The first thread may hold it still; who comes last destroys it.
            auto const tree = promised.get_future().get();
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

} // namespace Zorvan::AttributeContainer::Testing
