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

/// What the first who is asked may do with the note of the proposed value, which nobody has looked at yet.
TEST(AttributeChange, ProposedValueIsThereForWhoeverAsksFirst) {
    using Info = NewValueInfo<int>;
    Watched watchedToo;
    watchedToo.pre("asked too", 10, doing([](auto& a, auto&) { EXPECT_EQ(proposedTo(a), 3); }));
    CustAttr<int>& other = *watchedToo.attribute;
    bool isFirst = true;
    std::tuple<std::string, Change, Log> const rows[] = {
        {"nothing", [](auto&) {}, {"asked 5", "told 5 5"}},
        {"copies", [](auto& a) { EXPECT_EQ(a.copyNotifyInfos()->size(), 1u); }, {"asked 5", "told 5 5"}},
        {"gives away",
         [&](auto& a) {
             other.setNotifyInfos(a.copyNotifyInfos());
             EXPECT_EQ(proposedTo(other), 5);
             other.removeNotifyInfos(true);
         },
         {"asked 5", "told 5 5"}},
        {"attaches another",
         [](auto& a) { EXPECT_TRUE(a.addNotifyInfo(std::make_shared<InfoStringMap>())); },
         {"asked 5", "told 5 5"}},
        {"replaces it", [](auto& a) { a.addNotifyInfo(std::make_shared<Info>(6)); }, {"asked 6", "told 5 6"}},
        {"takes it",
         [](auto& a) { EXPECT_NE(a.removeNotifyInfo(typeid(Info), true), nullptr); },
         {"asked 0", "told 5 0"}},
        {"drops what expires",
         [](auto& a) { EXPECT_EQ(a.removeNotifyInfos(false), 1); },
         {"asked 0", "told 5 0"}},
        {"drops all", [](auto& a) { EXPECT_EQ(a.removeNotifyInfos(true), 1); }, {"asked 0", "told 5 0"}},
        {"drops those of another",
         [&](auto&) { EXPECT_EQ(other.removeNotifyInfos(true), 0); },
         {"asked 5", "told 5 5"}},
        {"keeps it",
         [](auto& a) { a.lookupNotifyInfo(typeid(Info))->setExpire(false); },
         {"asked 5", "told 5 5"}},
        {"sets another", [&](auto&) { other.setValue(3); }, {"asked 5", "told 5 5"}},
        {"sets it again", [](auto& a) { a.setValue(7); }, {"asked 7", "told 7 7", "asked 5", "told 5 5"}},
        {"blocks", [](auto&) { Attribute::setObservingBlocked(true); }, {"asked 5"}},
    };
    for (auto const& [name, act, log] : rows) {
        SCOPED_TRACE(name);
        Watched watched;
        isFirst = true;
        watched.pre("first", 20, doing([&, &change = act](auto& a, auto&) {
                        if (std::exchange(isFirst, false))
                            change(a);
                    }));
        Log seen;
        watched.pre("last", 1,
                    doing([&](auto& a, auto&) { seen.push_back("asked " + std::to_string(proposedTo(a))); }));
        watched.post("told", 1, doing([&](auto& a, auto&) {
                         seen.push_back("told " + std::to_string(a.getValue()) + " " +
                                        std::to_string(proposedTo(a)));
                     }));
        watched.attribute->setValue(5);
        Attribute::setObservingBlocked(false);
        EXPECT_EQ(seen, log);
        EXPECT_EQ(watched.hasInfos(), name == "keeps it");
        watched.attribute->removeNotifyInfos(true);
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
