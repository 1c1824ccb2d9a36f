// SPDX-License-Identifier: MIT
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

TEST_F(Path, StartsAsItsConstructorSaysAndIsCopiedWithoutTheActiveFlag) {
    EXPECT_EQ(NOT_FOUND, toPath("c", 1, 4711).getActionToken());
    ObserverPath source = toObserver(*a, -5, PRE_NOTIFY);
    EXPECT_TRUE(source.isActive() && !source.isTemporary() && ObserverPath().isTemporary());
    EXPECT_TRUE(a->watchesNothing()) << "only listed links count";
    observable->known["b"] = b;
    EXPECT_TRUE(toPath("b").isActive());
    EXPECT_EQ(std::nullopt, toPath("b").getPath()) << "now that of an observer without object path";
    source.setTemporary(true);
    ObserverPath copy(source);
    EXPECT_TRUE(copy.isTemporary() && !copy.isActive() && copy == source);
    EXPECT_EQ(-5, copy.getPriority());
    EXPECT_FALSE(ObserverPath(std::nullopt, source).activate()) << "without owner";
    copy = toPath("elsewhere");
    EXPECT_TRUE(copy == toPath("elsewhere") && !copy.isTemporary());
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
    struct Row {
        ObserverPath x, y;
        int order;
        bool isEqual;
    };
    ObserverPath const lost = toPath("x", 1, 4711);
    Row const rows[] = {{toObserver(*a, 1), toPath("x", 32767), 1, false},
                        {toObserver(*a, 1), toObserver(*b, 2), -1, false},
                        {toPath("x", 32767), toPath("y", -32768), 1, false},
                        {toObserver(*a, 5), toObserver(*a), 1, true},
                        {toObserver(*a), toObserver(*a, 1, PRE_NOTIFY), 0, false},
                        {toObserver(*a), toPath("/a"), 1, true},
                        {toObserver(*a), toPath("/A"), 1, false},
                        {toObserver(*b), toPath("/b"), 1, false},
                        {toPath("x"), toPath("x"), 0, true},
                        {toPath("x"), lost, 0, false},
                        {lost, lost, 0, true},
                        {ObserverPath(), ObserverPath(), 0, false}};
    for (Row const& row : rows) {
        SCOPED_TRACE(&row - rows);
        EXPECT_EQ(row.order, ObserverPath::comp(row.x, row.y));
        EXPECT_EQ(-row.order, ObserverPath::negComp(row.x, row.y));
        EXPECT_TRUE((row.x == row.y) == row.isEqual && (row.y == row.x) == row.isEqual);
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

TEST_F(Path, LongListsFindTheSameAsShortOnes) {
    ObserverList list;
    std::vector<std::shared_ptr<RecordingObserver>> observers;
    for (short i = 0; i < 60; ++i) {
        std::string const path = "/o" + std::to_string(i);
        observers.push_back(RecordingObserver::make("o", log, path));
        observable->known[path] = observers.back();
        list.add(std::make_unique<ObserverPath>(toObserver(*observers.back(), i % 7)));
        list.add(std::make_unique<ObserverPath>(toPath("t" + std::to_string(i), i % 5)));
    }
    list.sort();
    auto const pathOf = [&](ObserverPath const& sought) {
        std::uint64_t const found = list.lookup(sought);
        return found < list.size() ? list.at(found).getPath() : "none";
    };
    for (std::size_t i = 0; i < 60; ++i) {
        std::string const n = std::to_string(i);
        EXPECT_EQ("/o" + n, pathOf(toObserver(*observers[i])));
        EXPECT_EQ("/o" + n, pathOf(toPath("/o" + n))) << "by its path, resolved";
        EXPECT_EQ("t" + n, pathOf(toPath("t" + n)));
        EXPECT_EQ("none", pathOf(toPath("t" + n, 1, PRE_NOTIFY)));
    }
    list.removeElement(toObserver(*observers[5]), 0);
    observers[5]->objectPath = "t6";
    EXPECT_EQ("t6", pathOf(toObserver(*observers[5]))) << "a string is what its path equals";
    observers.clear();
    EXPECT_EQ(60U, list.size()) << "references go with their observers";
}

} // namespace
