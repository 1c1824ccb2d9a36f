// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"

#include <AttributeContainer/InfoStringMap.h>

#include <future>
#include <stdexcept>

namespace Zorvan::AttributeContainer::Testing {

namespace {

using Results = Attribute::NotificationResults;

/// What became of a promise for a change: the number of results, or "broken".
std::string outcomeOf(std::future<Results> future) try {
    return std::to_string(future.get().size());
} catch (std::future_error const&) {
    return "broken";
}

TEST(AttributeChange, PromisesAreFulfilledOrBroken) {
    Log const asked{"judge?", "asked?"}, all{"judge?", "asked?", "told"};
    std::tuple<int, std::string, std::string, int, Log> const rows[] = {
        {2, "set", "2 1", 2, all},
        {2, "unwatched", "0 0", 2, {}},
        {9, "refused", "2 broken", 1, asked},
        {3, "asking throws", "broken broken", 1, asked},
        {4, "telling throws", "2 broken", 4, all},
        {9, "blocked", "broken broken", 9, {}},
        {9, "disabled", "0 0", 9, {}},
        {9, "text", "2 1", 9, all},
        {9, "blocked text", "0 0", 9, {}},
    };
    for (auto const& [value, how, outcomes, stored, log] : rows) {
        SCOPED_TRACE(how);
        auto origin = std::make_unique<std::shared_ptr<ObservingObject>>(std::make_shared<CustAttr<int>>());
        auto const throws = doing([&](auto& a, Cause const& cause) {
            origin.reset();
            EXPECT_TRUE(cause);
            if (proposedTo(a) == 3 || (proposedTo(a) == 4 && a.getValue() == 4)) // known until the end
                throw std::runtime_error("bad");
        });
        Watched watched;
        watched.refuseNine();
        watched.observers.back()->changed = throws;
        watched.pre("asked", 1, throws);
        if (how == "unwatched")
            watched.observers.clear();
        else
            watched.attribute->addNotifyInfo(std::make_shared<InfoStringMap>());
        watched.attribute->setNotificationEnabled(how != "disabled");
        Attribute::setObservingBlocked(how.starts_with("blocked"));
        auto pre = std::make_unique<std::promise<Results>>(),
             post = std::make_unique<std::promise<Results>>();
        auto preResults = pre->get_future(), postResults = post->get_future();
        try {
            if (how.ends_with("text"))
                watched.attribute->assignFrom(std::to_string(value), *origin, std::move(pre),
                                              std::move(post));
            else
                watched.attribute->setValue(value, *origin, std::move(pre), std::move(post));
        } catch (std::runtime_error const&) {
            EXPECT_TRUE(how.ends_with("throws"));
        }
        Attribute::setObservingBlocked(false);
        EXPECT_EQ(outcomeOf(std::move(preResults)) + " " + outcomeOf(std::move(postResults)), outcomes);
        EXPECT_EQ(watched.value(), stored);
        EXPECT_EQ(watched.log, log);
        EXPECT_FALSE(watched.hasInfos());
    }
}

struct Overriding : Attr<int> {
    std::string getName() override { return calls; }
    std::optional<std::reference_wrapper<AttrContainer const>> getLocation() override { return {}; }
    AttrDefinition const* getDefinition() const override { return nullptr; }
    std::uint64_t getToken() override { return 0; }
    void touch(std::shared_ptr<ObservingObject> const& origin, Results* results) override {
        calls += 't';
        Attr::touch(origin, results);
    }
    void notifyPostObservers(std::shared_ptr<ObservingObject> const&, Results*) override { calls += 'n'; }

    std::string calls;
};

TEST(AttributeChange, WhatAnApplicationOverridesIsCalledAlsoWithoutObservers) {
    Overriding attribute;
    attribute.Attr::setValue(2);
    EXPECT_EQ(read(attribute, "Value 3\n}"), nullptr);
    EXPECT_EQ(attribute.calls, "tntn");
}

} // namespace

} // namespace Zorvan::AttributeContainer::Testing
