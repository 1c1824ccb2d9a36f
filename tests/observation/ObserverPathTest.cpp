// SPDX-License-Identifier: MIT
#include "observation/RecordingObserver.h"

#include <gtest/gtest.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Path : testing::Test {
    Log log;
    std::shared_ptr<RecordingObservable> owner = RecordingObservable::make();
    std::shared_ptr<RecordingObserver> a = RecordingObserver::make("a", log, "/a");
    std::shared_ptr<RecordingObserver> b = RecordingObserver::make("b", log);

    ObserverPath toObserver(Observer& observer, short priority = 1, std::uint64_t action = NOTIFY) {
        return ObserverPath(*owner, observer, priority, action);
    }
    ObserverPath toPath(std::string const& path, short priority = 1, std::uint64_t action = NOTIFY) {
        return ObserverPath(*owner, path, priority, action);
    }
};

TEST_F(Path, StartsAsItsConstructorSays) {
    ObserverPath const nothing;
    EXPECT_TRUE(nothing.isTemporary());
    EXPECT_EQ(0, nothing.getPriority());
    EXPECT_EQ(NOT_FOUND, nothing.getActionToken());
    EXPECT_EQ(std::nullopt, nothing.getActionName());
    EXPECT_EQ(std::nullopt, nothing.getPath());

    ObserverPath const referring = toObserver(*a, -5, PRE_NOTIFY);
    EXPECT_TRUE(referring.isActive() && !referring.isTemporary());
    EXPECT_EQ(-5, referring.getPriority());
    EXPECT_EQ("PreNotify", referring.getActionName());
    EXPECT_EQ("/a", referring.getPath());
    EXPECT_TRUE(a->watchesNothing()) << "only listed links count";

    owner->known["b"] = b;
    EXPECT_TRUE(toPath("b").isActive());
    EXPECT_EQ(std::nullopt, toPath("b").getPath()) << "now that of an observer without object path";
    EXPECT_FALSE(toPath("c").isActive());
    EXPECT_EQ("c", toPath("c", 1, 4711).getPath());
    EXPECT_EQ(NOT_FOUND, toPath("c", 1, 4711).getActionToken());
}

TEST_F(Path, CopiesTakeEverythingButTheActiveFlag) {
    ObserverPath source = toObserver(*a, 7, PRE_NOTIFY);
    source.setTemporary(true);
    ObserverPath copy(source);
    EXPECT_FALSE(copy.isActive());
    EXPECT_TRUE(copy.isTemporary());
    EXPECT_EQ(7, copy.getPriority());
    EXPECT_EQ(a.get(), &copy.lookupObserver()->get());
    copy = toPath("elsewhere");
    EXPECT_EQ("elsewhere", copy.getPath());
    EXPECT_EQ(NOTIFY, copy.getActionToken());
    EXPECT_FALSE(copy.isTemporary());
    ObserverPath orphan(std::nullopt, source);
    EXPECT_FALSE(orphan.activate()) << "without owner";
}

TEST_F(Path, AListedLinkThatIsAssignedToKeepsItsOwnerAndDetaches) {
    owner->addObserver(*a, 1, NOTIFY, false);
    owner->addObserver(*b, 2, NOTIFY, false);
    owner->getPath(1) = ObserverPath(std::nullopt, std::optional<std::string const>("/later"), 0, PRE_NOTIFY);
    EXPECT_TRUE(b->watchesNothing());
    owner->tell();
    EXPECT_EQ((Log{"a"}), log);
    RecordingObserver::setPathRoot(b);
    EXPECT_FALSE(owner->updateObserverLists(false)) << "asked of the path root, not of the owner";
    RecordingObserver::setPathRoot(nullptr);
    owner->known["/later"] = b;
    EXPECT_TRUE(owner->updateObserverLists(false));
    EXPECT_EQ(0U, b->entryOf(*owner));
}

TEST_F(Path, ComparesLivenessBeforePriority) {
    ObserverPath const liveLow = toObserver(*a, 1), liveHigh = toObserver(*b, 2),
                       deadHigh = toPath("x", 32767), deadLow = toPath("y", -32768);
    struct Row {
        ObserverPath const& x;
        ObserverPath const& y;
        int expected;
    };
    for (Row const& row : {Row{liveLow, deadHigh, 1}, Row{deadHigh, liveLow, -1}, Row{liveLow, liveHigh, -1},
                           Row{deadHigh, deadLow, 1}, Row{liveHigh, liveHigh, 0}}) {
        EXPECT_EQ(row.expected, ObserverPath::comp(row.x, row.y));
        EXPECT_EQ(-row.expected, ObserverPath::negComp(row.x, row.y));
    }
}

TEST_F(Path, EqualityIsOfActionAndObserver) {
    struct Row {
        ObserverPath x;
        ObserverPath y;
        bool equal;
    };
    ObserverPath const actionless = toPath("x", 1, 4711);
    for (Row const& row :
         {Row{toObserver(*a), toObserver(*a, 5), true}, Row{toObserver(*a), toObserver(*b), false},
          Row{toObserver(*a), toObserver(*a, 1, PRE_NOTIFY), false}, Row{toObserver(*a), toPath("/a"), true},
          Row{toPath("/A"), toObserver(*a), false}, Row{toObserver(*b), toPath("/b"), false},
          Row{toPath("x"), toPath("x"), true}, Row{toPath("x"), actionless, false},
          Row{actionless, actionless, true}, Row{ObserverPath(), ObserverPath(), false}}) {
        EXPECT_EQ(row.equal, row.x == row.y);
        EXPECT_EQ(row.equal, row.y == row.x);
    }
}

TEST_F(Path, IsActiveExactlyWhileTheObserverHasAnEntry) {
    owner->addObserver("b", 1, NOTIFY, false);
    ObserverPath& path = owner->getPath(0);
    EXPECT_FALSE(path.activate() || path.deactivate());
    owner->known["b"] = b;
    EXPECT_EQ(b.get(), &path.lookupObserver()->get());
    EXPECT_TRUE(b->watchesNothing() && !path.isActive());
    EXPECT_TRUE(path.activate());
    EXPECT_FALSE(path.activate());
    EXPECT_EQ(0U, b->entryOf(*owner));
    EXPECT_TRUE(path.deactivate());
    EXPECT_FALSE(path.deactivate());
    EXPECT_TRUE(b->watchesNothing());

    path.setObserver(std::nullopt, true);
    EXPECT_EQ(b.get(), &path.lookupObserver()->get()) << "nobody changes nothing";
    path.setObserver(*a, false);
    EXPECT_TRUE(path.isActive() && b->watchesNothing() && !a->watchesNothing());
    path.setObserver(*b, true);
    EXPECT_TRUE(a->watchesNothing() && !b->watchesNothing());

    EXPECT_FALSE(path.setObserverAsPath(std::nullopt)) << "b has no object path";
    EXPECT_TRUE(path.isActive());
    EXPECT_TRUE(path.setObserverAsPath("text"));
    EXPECT_TRUE(b->watchesNothing() && !path.isActive());
    EXPECT_EQ("text", path.getPath());
    EXPECT_FALSE(path.setObserverAsPath("other")) << "no reference any more";
    path.setObserver(*a, true);
    EXPECT_TRUE(path.setObserverAsPath(std::nullopt));
    EXPECT_EQ("/a", path.getPath());
}

TEST_F(Path, AListOfItsOwnKeepsOrderAndDefersRemoval) {
    ObserverList list;
    auto const add = [&](std::string const& path, short priority) {
        return list.add(std::make_unique<ObserverPath>(toPath(path, priority)));
    };
    auto const order = [&] {
        std::string paths;
        for (std::uint64_t i = 0; i < list.size(); ++i)
            paths += list.at(i).getPath().value_or("-");
        return paths;
    };
    auto const addAfter = [&](std::uint64_t index, std::string const& path, short priority) {
        return list.addAfter(index, std::make_unique<ObserverPath>(toPath(path, priority)));
    };
    EXPECT_TRUE(list.empty());
    EXPECT_THROW(list.remove(0, 1), std::out_of_range);
    EXPECT_EQ(nullptr, list.add(nullptr));
    addAfter(NOT_FOUND, "b", 2);
    addAfter(NOT_FOUND, "a", 2);
    add("c", 1);
    addAfter(0, "d", 1);
    addAfter(99, "e", 2);
    EXPECT_EQ("adbce", order());
    list.sort();
    EXPECT_EQ("dcabe", order()) << "equal ones keep their order";
    EXPECT_EQ(2U, list.lookup(toPath("a", 0)));
    add("a", 9);
    EXPECT_EQ(5U, list.lookup(toPath("a", 0))) << "the last one";
    EXPECT_TRUE(list.removeElement(toPath("a"), 0));
    EXPECT_FALSE(list.removeElement(toPath("z"), 0));
    auto const taken = list.remove(0, 0);
    EXPECT_EQ("d", taken->getPath());
    EXPECT_EQ(nullptr, list.remove(1, 3));
    EXPECT_EQ("c-be", order());
    EXPECT_EQ(NOT_FOUND, list.lookup(toPath("a")));
    list.at(2).setAction(4711);
    list.compress(false);
    EXPECT_EQ("ce", order()) << "removed ones and those without action are dropped";
}

TEST_F(Path, LongListsFindTheSameAsShortOnes) {
    ObserverList list;
    std::vector<std::shared_ptr<RecordingObserver>> observers;
    for (int i = 0; i < 60; ++i) {
        observers.push_back(RecordingObserver::make("o", log, "/o" + std::to_string(i)));
        owner->known["/o" + std::to_string(i)] = observers.back();
        list.add(std::make_unique<ObserverPath>(toObserver(*observers.back(), static_cast<short>(i % 7))));
        list.add(std::make_unique<ObserverPath>(toPath("t" + std::to_string(i), static_cast<short>(i % 5))));
    }
    list.sort();
    for (int i = 0; i < 60; ++i) {
        std::string const n = std::to_string(i);
        std::uint64_t const found = list.lookup(toObserver(*observers[static_cast<std::size_t>(i)]));
        ASSERT_LT(found, list.size());
        EXPECT_EQ("/o" + n, list.at(found).getPath());
        EXPECT_EQ(found, list.lookup(toPath("/o" + n))) << "by its path, resolved";
        std::uint64_t const text = list.lookup(toPath("t" + n));
        ASSERT_LT(text, list.size());
        EXPECT_EQ("t" + n, list.at(text).getPath());
        EXPECT_EQ(NOT_FOUND, list.lookup(toPath("t" + n, 1, PRE_NOTIFY)));
    }
    list.removeElement(toObserver(*observers[5]), 0);
    observers[5]->objectPath = "t6";
    EXPECT_EQ("t6", list.at(list.lookup(toObserver(*observers[5]))).getPath())
        << "a string is what its path equals";
    observers.clear();
    EXPECT_EQ(60U, list.size()) << "references go with their observers";
}

} // namespace
