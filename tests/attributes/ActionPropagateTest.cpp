// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"

#include <AttributeContainer/ActionContainer.h>
#include <AttributeContainer/AttributePropagationObserver.h>

namespace Zorvan::AttributeContainer::Testing {

namespace {

/// Attributes of which each follows the one before it, and in a ring the first one the last.
std::vector<Watched> makeChain(std::size_t length, bool isRing = false) {
    std::vector<Watched> chain(length);
    for (std::size_t i = isRing ? 0 : 1; i < length; ++i)
        follow(*chain[(i + length - 1) % length].attribute, *chain[i].attribute);
    return chain;
}

Action::ExecReturn propagate(Observable& source, Observer& target) {
    return ActionContainer::the()->getAction(PROPAGATE)->get().execute(source, target, std::nullopt);
}

TEST(ActionPropagate, ARingSettlesAlsoOnAnAdjustedValue) {
    for (std::size_t const length : {2u, 3u, 8u}) {
        auto ring = makeChain(length, true);
        for (auto& one : ring)
            one.post("told");
        ring[1].observers[0]->changed = doing([](auto& a, auto&) {
            if (a.getValue() > 100)
                a.setValue(100);
        });
        for (int const value : {6, 250}) {
            ring[length / 2].attribute->setValue(value);
            for (auto const& one : ring) {
                EXPECT_EQ(one.value(), std::min(value, 100)) << length;
                EXPECT_TRUE(value > 100 || one.log.size() <= 3) << length;
            }
        }
    }
}

TEST(ActionPropagate, WhatNeverSettlesEndsSoon) {
    auto ring = makeChain(5, true);
    std::size_t numCalls = 0;
    for (auto& one : ring) {
        auto& counter = one.post("counter", 20);
        counter.changed = doing([&numCalls, &counter](auto& a, auto&) {
            if (++numCalls < 1000000)
                a.setValue(a.getValue() + 1, counter.shared_from_this(), nullptr, nullptr);
        });
    }
    ring[0].attribute->setValue(2);
    EXPECT_LT(numCalls, 20000u);
    EXPECT_EQ(propagate(*ring[0].attribute, *ring[1].attribute->getObserver().lock()), Action::ExecFailed);
}

TEST(ActionPropagate, AnswersWhatBecameOfTheTarget) {
    auto chain = makeChain(2);
    auto& source = *chain[0].attribute;
    auto const observer = chain[1].attribute->getObserver().lock();
    chain[1].refuseNine();
    source.setValue(9);
    EXPECT_EQ(propagate(source, *observer), Action::ExecNotHandled);
    EXPECT_FALSE(chain[1].hasInfos());
    EXPECT_EQ(propagate(source, *chain[1].observers[0]), Action::ExecFailed) << "it is nobody's follower";
    chain[1].attribute.reset();
    EXPECT_EQ(propagate(source, *observer), Action::ExecFailed);
}

TEST(ActionPropagate, ChangesDuringTheRepeatedWalkArePropagated) {
    auto chain = makeChain(3);
    auto const source = chain[0].attribute;
    chain[1].post("corrector", 10, doing([&](auto& a, Cause const& cause) {
                      if (cause && &cause->get() == source.get() && a.getValue() != 50)
                          a.setValue(50, source, nullptr, nullptr);
                  }));
    source->setValue(7);
    EXPECT_EQ(chain[1].value() + chain[2].value(), 100);
}

} // namespace

} // namespace Zorvan::AttributeContainer::Testing
