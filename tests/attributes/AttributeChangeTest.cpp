// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"

#include <AttributeContainer/BlockObserver.h>
#include <AttributeContainer/InfoStringMap.h>
#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <stdexcept>
#include <thread>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

using Change = std::function<void(CustAttr<int>&)>;

Change const setNine = [](auto& a) { a.setValue(9); };
Change const readEight = [](auto& a) {
    std::istringstream in("8 ");
    a.readValueFrom(in, std::make_shared<ReadContextBase>());
};

Change blocked(Change const& change) {
    return [change](auto& a) {
        BlockObserver const scope;
        change(a);
    };
}

TEST(AttributeChange, ObserversAreAskedAndToldByPriorityTheLatestFirst) {
    Watched watched;
    watched.pre("low", 1);
    watched.pre("early", 20);
    watched.pre("late", 20);
    watched.post("after", 5);
    watched.post("first", 7);
    auto& origin = watched.pre("origin", 30);
    watched.attribute->addObserver(origin, 30, NOTIFY, true);
    watched.attribute->setValue(2, origin.shared_from_this(), nullptr, nullptr);
    EXPECT_EQ(watched.log, (Log{"late?", "early?", "low?", "first", "after"})) << "the origin knows already";
    EXPECT_EQ(watched.value(), 2);
}

TEST(AttributeChange, TheProposedValueIsThereUntilTheLastObserverWasTold) {
    for (bool const isAsked : {true, false}) {
        Watched watched;
        auto const expectProposal = [&](Observable& a, Cause const&) {
            EXPECT_EQ(proposedTo(a), isAsked ? 5 : 0) << "without pre-observers nothing is attached";
            return Action::ExecOk;
        };
        if (isAsked)
            watched.pre("asked", 1, expectProposal);
        watched.post("told", 1, expectProposal);
        watched.attribute->setValue(5);
        EXPECT_EQ(watched.log.size(), isAsked ? 2u : 1u);
        EXPECT_FALSE(watched.hasInfos());
    }
}

TEST(AttributeChange, PromisesAreFulfilledOrBroken) {
    bool const isText = true, isBlocked = true, isDisabled = true;
    struct {
        char const* what;
        int value;
        bool isText, isBlocked, isDisabled;
        char const *pre, *post;
        int stored;
        Log log;
    } const rows[] = {
        {"stored", 2, false, false, false, "2", "1", 2, {"judge?", "asked?", "told"}},
        {"refused", 9, false, false, false, "2", "broken", 1, {"judge?", "asked?"}},
        {"blocked", 9, false, isBlocked, false, "broken", "broken", 9, {}},
        {"disabled", 9, false, false, isDisabled, "0", "0", 9, {}},
        {"text", 9, isText, false, false, "2", "1", 9, {"judge?", "asked?", "told"}},
        {"blocked text", 9, isText, isBlocked, false, "broken", "broken", 9, {}},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Watched watched;
        watched.refuseNine();
        watched.pre("asked", 1);
        watched.attribute->setNotificationEnabled(!row.isDisabled);
        Awaited pre, post;
        Attribute::setObservingBlocked(row.isBlocked);
        if (row.isText)
            watched.attribute->assignFrom(std::to_string(row.value), nullptr, pre.promise(), post.promise());
        else
            watched.attribute->setValue(row.value, nullptr, pre.promise(), post.promise());
        Attribute::setObservingBlocked(false);
        EXPECT_EQ(pre.outcome(), row.pre);
        EXPECT_EQ(post.outcome(), row.post);
        EXPECT_EQ(watched.value(), row.stored);
        EXPECT_EQ(watched.log, row.log);
    }
    Awaited pre, post;
    CustAttr<int>(1).setValue(2, nullptr, pre.promise(), post.promise());
    EXPECT_EQ(pre.outcome() + post.outcome(), "00") << "without observers";
}

TEST(AttributeChange, ARefusedValueIsNotStoredWhateverHandlersDo) {
    auto const source = std::make_shared<CustAttr<int>>();
    struct {
        char const* what;
        Change nested;
        int stored;
    } const rows[] = {
        {"nothing", [](auto&) {}, 1},
        {"another value", [](auto& a) { a.setValue(5); }, 5},
        {"the same value", setNine, 1},
        {"a text", [](auto& a) { assignText(a, "6"); }, 6},
        {"touched", [](auto& a) { a.touch(nullptr, nullptr); }, 1},
        {"asked", [](auto& a) { a.preTouch(nullptr, nullptr); }, 1},
        {"unasked", blocked([](auto& a) { a.setValue(7); }), 7},
        {"read", readEight, 8},
        {"propagated", [&](auto&) { source->setValue(4); }, 4},
        {"propagated and refused", [&](auto&) { assignText(*source, "9"); }, 1},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Watched watched;
        source->addObserver(*watched.attribute->getObserver().lock(), 10, PROPAGATE, true);
        watched.refuseNine();
        bool isNested = false;
        watched.pre("meddler", 1, [&](Observable& a, Cause const&) {
            EXPECT_TRUE(isNested || a.lookupNotifyInfo(typeid(InfoFailed))) << "the reason is there for all";
            if (!std::exchange(isNested, true))
                row.nested(*watched.attribute);
            return Action::ExecOk;
        });
        setNine(*watched.attribute);
        EXPECT_TRUE(isNested);
        EXPECT_EQ(watched.value(), row.stored);
        EXPECT_FALSE(watched.hasInfos());
    }
}

TEST(AttributeChange, ARefusalThatDidNotCountDoesNotRefuseALaterChange) {
    Watched watched;
    watched.pre("critic", 1,
                [](Observable& a, Cause const&) { // Objects to texts, which are stored all the same.
                    return proposedTo(a) == 0 ? refuse(a) : Action::ExecOk;
                });
    watched.post("corrector", 1, [](Observable& a, Cause const&) {
        if (static_cast<CustAttr<int>&>(a).getValue() > 100)
            static_cast<CustAttr<int>&>(a).setValue(100);
        return Action::ExecOk;
    });
    assignText(*watched.attribute, "250");
    EXPECT_EQ(watched.value(), 100);
}

TEST(AttributeChange, NoExpiringInfoIsLeftBehind) {
    Change const disabled = [](auto& a) {
        a.setNotificationEnabled(false);
        a.setValue(2);
    };
    Change const changes[] = {setNine,
                              blocked(setNine),
                              disabled,
                              readEight,
                              [](auto& a) { a.setValue(2); },
                              [](auto& a) { assignText(a, "9"); },
                              [](auto& a) { a.touch(nullptr, nullptr); }};
    for (auto const& change : changes)
        for (char const* const watchers : {"none", "good", "asking throws", "telling throws"}) {
            SCOPED_TRACE(std::to_string(&change - changes) + watchers);
            Watched watched;
            auto const throws = [](Observable&, Cause const&) -> Action::ExecReturn {
                throw std::runtime_error("bad");
            };
            if (watchers != std::string("none"))
                watched.refuseNine();
            if (watchers == std::string("asking throws"))
                watched.pre("bad", 1, throws);
            if (watchers == std::string("telling throws"))
                watched.post("bad", 1, throws);
            auto const lasting = std::make_shared<ObserverInfo>();
            lasting->setExpire(false);
            watched.attribute->addNotifyInfo(lasting);
            watched.attribute->addNotifyInfo(std::make_shared<InfoStringMap>());
            try {
                change(*watched.attribute);
            } catch (std::runtime_error const&) {
            }
            EXPECT_EQ(watched.attribute->copyNotifyInfos()->size(), 1u);
            EXPECT_EQ(watched.attribute->removeNotifyInfo(typeid(ObserverInfo), true), lasting);
            EXPECT_FALSE(Attribute::isObservingBlocked());
        }
}

TEST(AttributeChange, AnExceptionOfAHandlerComesThroughAndLeavesTheAttributeUsable) {
    for (bool const isPre : {true, false}) {
        Watched watched;
        auto const throws = [](Observable&, Cause const&) -> Action::ExecReturn {
            throw std::runtime_error("bad");
        };
        auto& bad = isPre ? watched.pre("bad", 1, throws) : watched.post("bad", 1, throws);
        Awaited pre, post;
        EXPECT_THROW(watched.attribute->setValue(2, nullptr, pre.promise(), post.promise()),
                     std::runtime_error);
        EXPECT_EQ(watched.value(), isPre ? 1 : 2);
        EXPECT_EQ(pre.outcome() + post.outcome(), isPre ? "brokenbroken" : "0broken");
        bad.changed = bad.toChange = nullptr;
        watched.attribute->setValue(3);
        EXPECT_EQ(watched.log.size(), 2u);
    }
}

TEST(AttributeChange, AHandlerMayDestroyTheAttributeItsContainerAndTheValue) {
    struct Tree {
        std::shared_ptr<AttrContainer> root = AttrContainer::create(), leaf = AttrContainer::create();
        std::shared_ptr<CustAttr<std::string>> attribute, source;
    };
    std::string const value(100, 'v');
    std::function<void(Tree const&)> const acts[] = {
        // The tree is emptied while they run.
        [](Tree const& t) { t.attribute->setValue(t.source->getValue()); },
        [](Tree const& t) { assignText(*t.attribute, t.source->getValue()); },
        [](Tree const& t) { static_cast<Attribute&>(*t.attribute) = *t.source; },
        [](Tree const& t) { t.attribute->setValue(t.attribute->getValue()); },
        [](Tree const& t) { t.attribute->touch(nullptr, nullptr); },
        [](Tree const& t) { static_cast<void>(t.leaf->setName("renamed", 0)); },
        [](Tree const& t) { t.source->setValue("propagated"); },
        [](Tree const& t) {
            std::istringstream in("Value \"read\"\nWrite 1\nOdd 1\n}");
            static_cast<void>(t.attribute->readFrom(in, std::make_shared<ReadContextBase>()));
        }};
    for (bool const isPre : {true, false})
        for (auto const& act : acts) {
            Log log;
            Tree tree;
            auto const destroyer = RecordingObserver::make("destroyer", log);
            destroyer->changed = destroyer->toChange = [&](Observable&, Cause const&) {
                tree = Tree();
                return Action::ExecOk;
            };
            tree.attribute = std::make_shared<CustAttr<std::string>>(value);
            tree.source = std::make_shared<CustAttr<std::string>>(value);
            tree.root->addField(tree.leaf, "leaf", 0);
            tree.leaf->addAttribute(tree.attribute, "a");
            tree.source->addObserver(*tree.attribute->getObserver().lock(), 10, PROPAGATE, true);
            for (Attribute* watched : {static_cast<Attribute*>(tree.attribute.get()), //
                                       static_cast<Attribute*>(&tree.leaf->Attr_name())})
                isPre ? watched->addPreObserver(*destroyer, 10, PRE_NOTIFY, true)
                      : watched->addObserver(*destroyer, 10, NOTIFY, true);
            std::weak_ptr<Attribute> const remains = tree.attribute;
            act(tree);
            tree = Tree();
            EXPECT_TRUE(remains.expired());
        }
}

TEST(BlockObserver, TheOutermostScopeEndsTheBlock) {
    Watched watched;
    watched.refuseNine();
    {
        BlockObserver const outer;
        blocked(setNine)(*watched.attribute);
        EXPECT_TRUE(Attribute::isObservingBlocked());
        watched.attribute->touch(nullptr, nullptr);
        bool isBlockedElsewhere = true;
        std::thread([&] { isBlockedElsewhere = Attribute::isObservingBlocked(); }).join();
        EXPECT_FALSE(isBlockedElsewhere);
    }
    EXPECT_FALSE(Attribute::isObservingBlocked());
    EXPECT_EQ(watched.value(), 9);
    EXPECT_EQ(watched.log, Log{});
    watched.attribute->setValue(2);
    EXPECT_EQ(watched.log, (Log{"judge?", "told"}));
}

} // namespace
