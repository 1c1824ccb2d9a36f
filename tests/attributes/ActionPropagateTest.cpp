// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"

#include <AttributeContainer/ActionContainer.h>
#include <AttributeContainer/AttributePropagationObserver.h>

#include <gtest/gtest.h>

#include <vector>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

void follow(Attribute& source, Attribute& target) {
    source.addObserver(*target.getObserver().lock(), 10, PROPAGATE, true);
}

/// Attributes of which each follows the one before it.
std::vector<Watched> makeChain(std::size_t length) {
    std::vector<Watched> chain(length);
    for (std::size_t i = 1; i < length; ++i)
        follow(*chain[i - 1].attribute, *chain[i].attribute);
    return chain;
}

Action::ExecReturn propagateOnce(Attribute& source, Attribute& target) {
    auto const action = ActionContainer::the()->getAction(PROPAGATE);
    return action->get().execute(source, *target.getObserver().lock(), std::nullopt);
}

TEST(ActionPropagate, AChainIsToldALinearNumberOfTimes) {
    auto chain = makeChain(25);
    std::vector<ObservingObject const*> causes;
    for (auto& one : chain)
        one.post("told");
    chain[2].observers.back()->changed = [&](Observable&, Cause const& cause) {
        causes.push_back(cause ? &cause->get() : nullptr);
        return Action::ExecOk;
    };
    chain[0].attribute->setValue(7);
    EXPECT_EQ(chain[0].log.size(), 1u);
    for (std::size_t i = 1; i < chain.size(); ++i) {
        EXPECT_EQ(chain[i].attribute->getValue(), 7);
        EXPECT_EQ(chain[i].log.size(), 2u) << "its own change, then its source as cause";
    }
    EXPECT_EQ(causes, (std::vector<ObservingObject const*>{nullptr, chain[1].attribute.get()}));
}

TEST(ActionPropagate, ThePreObserversOfTheTargetMayRefuse) {
    auto chain = makeChain(3);
    chain[1].refuseNine();
    chain[0].attribute->setValue(9);
    EXPECT_EQ(chain[0].attribute->getValue(), 9);
    EXPECT_EQ(chain[1].attribute->getValue(), 1);
    EXPECT_EQ(chain[1].log, (Log{"judge?", "judge?"})) << "nobody is told of a source that was not followed";
    EXPECT_EQ(propagateOnce(*chain[0].attribute, *chain[1].attribute), Action::ExecNotHandled);
    EXPECT_FALSE(chain[1].hasInfos());

    chain[1].pre("by cause", 95, [&](Observable& a, Cause const& cause) {
        return cause && &cause->get() == chain[0].attribute.get() ? refuse(a) : Action::ExecOk;
    });
    chain[0].attribute->setValue(4);
    EXPECT_EQ(chain[1].attribute->getValue(), 1);
    chain[1].attribute->setValue(5);
    EXPECT_EQ(chain[2].attribute->getValue(), 5);
}

TEST(ActionPropagate, AttributesThatFollowEachOtherSettle) {
    for (std::size_t const length : {2u, 3u, 8u}) {
        auto ring = makeChain(length);
        follow(*ring.back().attribute, *ring.front().attribute);
        for (auto& one : ring)
            one.post("told");
        ring[length / 2].attribute->setValue(6);
        for (auto const& one : ring) {
            EXPECT_EQ(one.attribute->getValue(), 6);
            EXPECT_LE(one.log.size(), 3u);
        }
    }
}

TEST(ActionPropagate, AnAdjustedValueComesBackToTheSource) {
    auto pair = makeChain(2);
    follow(*pair[1].attribute, *pair[0].attribute);
    pair[1].post("limit", 20, [](Observable& a, Cause const&) {
        auto& attribute = static_cast<CustAttr<int>&>(a);
        if (attribute.getValue() > 100)
            attribute.setValue(100);
        return Action::ExecOk;
    });
    pair[0].attribute->setValue(250);
    EXPECT_EQ(pair[0].attribute->getValue(), 100);
    EXPECT_EQ(pair[1].attribute->getValue(), 100);
}

TEST(ActionPropagate, WhatNeverSettlesEndsSoon) {
    auto ring = makeChain(5);
    follow(*ring.back().attribute, *ring.front().attribute);
    std::size_t numCalls = 0;
    for (auto& one : ring) {
        auto& observer = one.post("counter", 20);
        observer.changed = [&numCalls, self = &observer](Observable& a, Cause const&) {
            auto& attribute = static_cast<CustAttr<int>&>(a);
            if (++numCalls < 1000000)
                attribute.setValue(attribute.getValue() + 1, self->shared_from_this(), nullptr, nullptr);
            return Action::ExecOk;
        };
    }
    ring[0].attribute->setValue(2);
    EXPECT_LT(numCalls, 20000u);
    EXPECT_EQ(propagateOnce(*ring[0].attribute, *ring[1].attribute), Action::ExecFailed);
}

TEST(ActionPropagate, ChangesDuringTheRepeatedWalkArePropagated) {
    for (bool const isOwnOrigin : {false, true}) {
        auto chain = makeChain(3);
        auto const source = chain[0].attribute;
        chain[1].post("corrector", 10, [&](Observable& a, Cause const& cause) {
            if (cause && &cause->get() == source.get() && static_cast<CustAttr<int>&>(a).getValue() != 50)
                static_cast<CustAttr<int>&>(a).setValue(50, isOwnOrigin ? source : nullptr, nullptr, nullptr);
            return Action::ExecOk;
        });
        source->setValue(7);
        EXPECT_EQ(chain[1].attribute->getValue(), 50);
        EXPECT_EQ(chain[2].attribute->getValue(), 50);
    }
}

TEST(ActionPropagate, OtherTypesFollowThroughTheirText) {
    auto const whole = std::make_shared<CustAttr<int>>();
    auto const fraction = std::make_shared<CustAttr<double>>();
    auto const text = std::make_shared<CustAttr<std::string>>();
    follow(*fraction, *whole);
    follow(*whole, *fraction);
    follow(*whole, *text);
    fraction->setValue(2.5);
    EXPECT_EQ(whole->getValue(), 2);
    EXPECT_EQ(fraction->getValue(), 2.0) << "what comes back is what the int could keep";
    EXPECT_EQ(text->getValue(), "2");
}

TEST(ActionPropagate, WhatCannotFollowFails) {
    Watched source, target;
    auto const action = ActionContainer::the()->getAction(PROPAGATE);
    auto const observer = target.attribute->getObserver().lock();
    auto const other = RecordingObserver::make("o", source.log);
    RecordingObservable noAttribute;
    auto& propagation = action->get();
    EXPECT_EQ(propagation.execute(noAttribute, *observer, std::nullopt), Action::ExecFailed);
    EXPECT_EQ(propagation.execute(*source.attribute, *other, std::nullopt), Action::ExecFailed);
    EXPECT_EQ(propagation.execute(*source.attribute, *observer, *observer), Action::ExecNotHandled);
    EXPECT_EQ(propagation.execute(*source.attribute, *observer, std::nullopt), Action::ExecOk);
    target.attribute.reset();
    EXPECT_EQ(propagation.execute(*source.attribute, *observer, std::nullopt), Action::ExecFailed);
}

TEST(ActionPropagate, TheTargetMayGoWhileItFollows) {
    for (bool const isPre : {true, false}) {
        auto chain = makeChain(3);
        auto& destroyer = isPre ? chain[1].pre("destroyer") : chain[1].post("destroyer", 20);
        destroyer.toChange = destroyer.changed = [&](Observable&, Cause const&) {
            chain[0].attribute.reset();
            chain[1].attribute.reset();
            chain[2].attribute.reset();
            return Action::ExecOk;
        };
        chain[0].attribute->setValue(7);
        EXPECT_EQ(chain[1].attribute, nullptr);
    }
}

} // namespace
