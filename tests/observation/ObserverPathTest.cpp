// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "observation/ObservationFixture.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

struct Path : ObservationTest {
    ObserverPath toObserver(Observer& observer, short priority = 1, std::uint64_t action = NOTIFY) {
        return ObserverPath(*observable, observer, priority, action);
    }
    ObserverPath toPath(std::string const& path, short priority = 1, std::uint64_t action = NOTIFY) {
        return ObserverPath(*observable, path, priority, action);
    }
};

TEST_F(Path, IsCopiedAndAssignedWithoutItsOwnerAndTheActiveFlag) {
    ObserverPath source = toObserver(*a, -5, PRE_NOTIFY);
    source.setTemporary(true);
    ObserverPath copy(source);
    EXPECT_TRUE(copy.isTemporary() && !copy.isActive() && copy == source);
    EXPECT_FALSE(ObserverPath(std::nullopt, source).activate()) << "without owner";
    copy = toPath("elsewhere");
    a.reset();
    EXPECT_TRUE(copy == toPath("elsewhere") && !copy.isTemporary()) << "it refers to the observer no more";
    EXPECT_FALSE(source.isActive()) << "its observer has ended";
    observable->known["b"] = b;
    EXPECT_TRUE(toPath("b").isActive());
}

TEST_F(Path, AListedLinkThatIsAssignedToKeepsItsOwnerAndDetaches) {
    observable->addObserver(*a, 1, NOTIFY, false);
    observable->addObserver(*b, 2, NOTIFY, false);
    observable->getPath(1) = toPath("/later", 0, PRE_NOTIFY);
    EXPECT_TRUE(b->watchesNothing());
    RecordingObserver::setPathRoot(b);
    EXPECT_FALSE(observable->updateObserverLists(false)) << "asked of the path root, not of the owner";
    RecordingObserver::setPathRoot(nullptr);
    observable->known["/later"] = b;
    EXPECT_TRUE(observable->updateObserverLists(false));
    EXPECT_EQ(0U, b->entryOf(*observable));
}

TEST_F(Path, ComparesLivenessBeforePriorityAndIsEqualByActionAndObserver) {
    std::map<std::string, std::uint64_t> const actions{
        {"", NOTIFY}, {"PreNotify", PRE_NOTIFY}, {"lost", 4711}};
    auto const made = [&](std::string const& words) {
        std::istringstream in(words);
        std::string to, action;
        short priority = 1;
        in >> to >> priority >> action;
        return words == "none"          ? ObserverPath()
               : to == "a" || to == "b" ? toObserver(to == "a" ? *a : *b, priority, actions.at(action))
                                        : toPath(to, priority, actions.at(action));
    };
    for (auto const& row : dataRows("observation/comparisons.txt")) {
        ObserverPath const x = made(row[0]), y = made(row[1]);
        int const order = std::stoi(row[2]);
        EXPECT_EQ(order, ObserverPath::comp(x, y)) << row.place;
        EXPECT_EQ(-order, ObserverPath::negComp(x, y)) << row.place;
        EXPECT_TRUE((x == y) == (row[3] == "equal") && (y == x) == (row[3] == "equal")) << row.place;
    }
}

TEST_F(Path, IsActiveExactlyWhileTheObserverHasAnEntry) {
    observable->addObserver("b", 1, NOTIFY, false);
    ObserverPath& path = observable->getPath(0);
    auto const watching = [&] {
        EXPECT_EQ(path.isActive(), !a->watchesNothing() || !b->watchesNothing());
        return std::string(a->watchesNothing() ? "" : "a") + (b->watchesNothing() ? "" : "b");
    };
    EXPECT_FALSE(path.activate() || path.deactivate());
    observable->known["b"] = b;
    EXPECT_EQ(b.get(), &path.lookupObserver()->get());
    EXPECT_EQ("", watching());
    EXPECT_TRUE(path.activate() && !path.activate());
    EXPECT_EQ("b", watching());
    EXPECT_TRUE(path.deactivate() && !path.deactivate());
    path.setObserver(std::nullopt, true);
    EXPECT_EQ(b.get(), &path.lookupObserver()->get()) << "nobody changes nothing";
    EXPECT_EQ("", watching());
    path.setObserver(*a, false);
    EXPECT_EQ("a", watching());
    path.setObserver(*b, true);
    EXPECT_FALSE(path.setObserverAsPath(std::nullopt)) << "b has no object path";
    EXPECT_EQ("b", watching());
    EXPECT_TRUE(path.setObserverAsPath("text") && path.getPath() == "text");
    EXPECT_EQ("", watching());
    EXPECT_FALSE(path.setObserverAsPath("other")) << "no reference any more";
    path.setObserver(*a, true);
    EXPECT_TRUE(path.setObserverAsPath(std::nullopt) && path.getPath() == "/a");
}

TEST_F(Path, AListOfItsOwnKeepsOrderAndDefersRemoval) {
    ObserverList list;
    auto const order = [&] {
        std::string paths;
        for (std::uint64_t i = 0; i < list.size(); ++i)
            paths += list.at(i).getPath().value_or("-");
        return paths;
    };
    EXPECT_THROW(list.remove(0, 1), std::out_of_range);
    EXPECT_EQ(nullptr, list.add(nullptr));
    using Row = std::tuple<std::uint64_t, char const*, short>;
    for (auto const& [index, path, priority] :
         {Row{NOT_FOUND, "b", 2}, Row{NOT_FOUND, "a", 2}, Row{2, "c", 1}, Row{0, "d", 1}, Row{99, "e", 2}})
        list.addAfter(index, std::make_unique<ObserverPath>(toPath(path, priority)));
    EXPECT_EQ("adbce", order());
    list.sort();
    EXPECT_EQ("dcabe", order()) << "equal ones keep their order";
    list.add(std::make_unique<ObserverPath>(toPath("a", 9)));
    EXPECT_EQ(5U, list.lookup(toPath("a", 0))) << "the last one";
    EXPECT_TRUE(list.removeElement(toPath("a"), 0) && !list.removeElement(toPath("z"), 0));
    EXPECT_EQ("d", list.remove(0, 0)->getPath());
    EXPECT_EQ(nullptr, list.remove(1, 3));
    EXPECT_EQ("c-be", order());
    EXPECT_EQ(NOT_FOUND, list.lookup(toPath("a")));
    list.at(2).setAction(4711);
    list.compress(false);
    EXPECT_EQ("ce", order()) << "removed ones and those without action are dropped";
}

} // namespace
