// SPDX-License-Identifier: MIT
#include "traversal/TreeFixture.h"

#include "attributes/AttributeFixture.h"

#include <AttributeContainer/BlockObserver.h>

#include <gtest/gtest.h>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

AttrContMerger::Result merge(Container const& target, Container const& source, unsigned int flags = 0) {
    AttrContMerger::Result result;
    AttrContMerger::merge(*target, *source, flags, &result);
    return result;
}

/// Tells a log of each attribute of a tree that is announced.
struct Listeners {
    Log log;
    std::vector<std::shared_ptr<RecordingObserver>> observers;

    void watch(Container const& container) {
        for (std::uint64_t token = 0; token < container->getNumAttributes(); ++token) {
            auto const attribute = container->getAttr(token).lock();
            observers.push_back(
                RecordingObserver::make(container->getName() + "/" + attribute->getName(), log));
            attribute->addObserver(*observers.back(), 10, NOTIFY, false);
        }
        for (std::uint64_t token = 0; token < container->getNumFields(); ++token)
            if (auto const field = container->getField(token).lock())
                watch(field);
    }
};

TEST(AttrContMerger, DoesAndAnnouncesWhatTheFlagsSay) {
    struct Row {
        unsigned int flags;
        std::string counters;
        std::uint64_t differences;
        Log announced;
        std::string marked;
    };
    Log const once{"a/Name", "a/d", "a/n", "cfg/Name", "cfg/w"};
    Log const twice{"a/Name", "a/d", "a/d", "a/n", "a/n", "cfg/Name", "cfg/w", "cfg/w"};
    std::string const changed = "n d onlyB onlyB2 w v ";
    for (Row const& row :
         std::initializer_list<Row>{{0, "3 2 3 1 1 1", 0, twice, ""},
                                    {1, "3 2 3 1 1 1", 0, {"a/d", "a/d", "a/n", "a/n", "cfg/w", "cfg/w"}, ""},
                                    {2, "3 2 3 0 1 0", 2, twice, ""},
                                    {4, "0 0 0 1 1 1", 6, {}, ""},
                                    {8, "3 2 3 1 1 1", 0, twice, changed},
                                    {16, "3 2 3 1 1 1", 0, once, ""},
                                    {17, "3 2 3 1 1 1", 0, {"a/d", "a/n", "cfg/w"}, ""},
                                    {32, "3 2 3 1 1 1", 0, {}, ""},
                                    {56, "3 2 3 1 1 1", 0, {}, changed}}) {
        Differing const trees;
        Listeners listeners;
        listeners.watch(trees.a);
        EXPECT_EQ(row.counters, text(merge(trees.a, trees.b, row.flags))) << row.flags;
        EXPECT_EQ(row.differences, differences(*trees.a, *trees.b)) << row.flags;
        EXPECT_EQ(row.announced, listeners.log) << row.flags;
        std::string marked;
        for (auto const& container : {trees.a, trees.a->getField("f").lock()})
            for (std::uint64_t token = 0; token < container->getNumAttributes(); ++token)
                if (auto const attribute = container->getAttr(token).lock(); attribute->isMarked())
                    marked += attribute->getName() + " ";
        for (auto const* name : {"n", "d", "onlyB", "onlyB2", "w", "v"})
            EXPECT_EQ(row.marked.empty(), marked.find(name) == std::string::npos) << row.flags << name;
        EXPECT_EQ(row.marked.size(), marked.size()) << marked;
        EXPECT_FALSE(Attribute::isObservingBlocked());
    }
}

TEST(AttrContMerger, AnnouncesDeferredChangesAfterTheLastPhase) {
    Differing const trees;
    Listeners listeners;
    listeners.watch(trees.a);
    bool wereAllThere = true;
    for (auto const& observer : listeners.observers)
        observer->changed = [&](Observable&, Cause const&) {
            wereAllThere = wereAllThere && trees.a->getField("g").expired() && trees.a->getField("h").lock();
            return Action::ExecOk;
        };
    merge(trees.a, trees.b, 16);
    EXPECT_EQ(5u, listeners.log.size());
    EXPECT_TRUE(wereAllThere);
}

TEST(AttrContMerger, ConsidersOnlyMarkedAttributesWhenItAssigns) {
    Differing const trees;
    for (auto const* name : {"d", "onlyB"})
        trees.b->getAttr(name).lock()->setMarked(true);
    EXPECT_EQ("1 0 1 1 1 1", text(merge(trees.a, trees.b, 4)));
    EXPECT_EQ(0u, differences(*trees.a->getField("h").lock(), *trees.b->getField("h").lock()));
}

TEST(AttrContMerger, LeavesDeclaredAttributesAndCountsThem) {
    auto const object = named<Object>("x");
    AttrContMerger::Result result = merge(object, named("x"));
    EXPECT_EQ("0 1 0 5 0 0", text(result));
    EXPECT_EQ(6u, object->getNumAttributes());
    AttrContMerger::merge(*object, *named("x"), 0, &result);
    EXPECT_EQ("0 2 0 10 0 0", text(result)) << "counters are added to";
    AttrContMerger::merge(*object, *named("y"), 0, nullptr);
    EXPECT_EQ("y", object->getName());
}

TEST(AttrContMerger, DoesNotCountMarkOrTouchWhatWasRefused) {
    Differing const trees;
    Listeners listeners;
    listeners.watch(trees.a);
    auto const refusing = RecordingObserver::make("refusing", listeners.log);
    refusing->toChange = [](Observable& observable, Cause const&) { return refuse(observable); };
    trees.a->getAttr("n").lock()->addPreObserver(*refusing, 10, PRE_NOTIFY, false);
    {
        BlockObserver const scope;
        trees.b->name("no name"); // Its own guard refuses it in the target.
    }
    EXPECT_EQ("2 1 3 1 1 1", text(merge(trees.a, trees.b, 8)));
    EXPECT_EQ("a", trees.a->getName());
    EXPECT_FALSE(trees.a->getAttr("n").lock()->isMarked());
    EXPECT_EQ((Log{"a/d", "a/d", "refusing?", "cfg/Name", "cfg/w", "cfg/w"}), listeners.log);
    EXPECT_EQ("2 8 0 0 0 0", text(merge(trees.a, trees.b, 33))) << "nobody is asked";
    EXPECT_EQ("no name", trees.a->getName());
}

TEST(AttrContMerger, KeepsWhatBlocksObservation) {
    Differing const trees;
    Listeners listeners;
    listeners.watch(trees.a);
    for (unsigned int const flags : {0u, 16u, 32u}) {
        BlockObserver const scope;
        merge(trees.a, trees.b, flags);
        EXPECT_TRUE(Attribute::isObservingBlocked());
    }
    EXPECT_EQ(Log(), listeners.log);
}

TEST(AttrContMerger, CountsWhatCannotBeAddedAndMarksNothing) {
    auto const target = named("x"), source = named("x");
    addField(target, "taken", "taken");
    addField(source, "taken", "taken");
    auto const holder = named("x");
    add(holder, "taken", 1);
    EXPECT_EQ("0 1 1 0 0 1", text(merge(target, holder, 8)));
    EXPECT_EQ(1u, target->getNumAttributes());
    EXPECT_EQ("0 1 1 0 0 0", text(merge(target, holder, 8))) << "the name is free now";
    EXPECT_TRUE(target->getAttr("taken").lock()->isMarked());
}

TEST(AttrContMerger, KeepsTheOrderOfMembersOfOneName) {
    auto const target = named("x"), source = named("x");
    auto const fill = [](Container const& tree, std::initializer_list<int> values) {
        for (int const value : values) {
            std::string const name = value ? "v" : "gone";
            add(tree, name + "A", value);
            add(addField(tree, name, "own"), "v", value);
        }
    };
    fill(target, {1, 0, 2, 3, 0, 4, 5});
    fill(source, {1, 2, 3});
    EXPECT_EQ("0 10 0 4 0 4", text(merge(target, source)));
    EXPECT_EQ(0u, differences(*target, *source));
    EXPECT_EQ("0 10 2 0 2 0", text([&] {
                  fill(source, {4, 5});
                  return merge(target, source);
              }()));
    EXPECT_EQ("v", target->getFieldName(4).value_or("")) << "a later one keeps its name";
    EXPECT_EQ(0u, differences(*target, *source));
}

TEST(AttrContMerger, SparesFieldsThatItHasRenamed) {
    auto const target = named<Object>("x"), source = named<Object>("x");
    EXPECT_TRUE(target->addChild(named<Object>("pump"), 0));
    for (auto const* name : {"pump", "pump1"})
        add(addField(source, name, name), "v", 1);
    EXPECT_EQ("0 6 0 0 2 0", text(merge(target, source)));
    EXPECT_EQ((Names{"pump1", "pump2"}), fieldNames(*target));
}

TEST(AttrContMerger, FillsAndEmptiesDeclaredSlots) {
    auto const target = named<Pump>("x"), source = named<Pump>("x");
    EXPECT_TRUE(source->setField(1, named("own")));
    EXPECT_TRUE(source->rmField(0));
    EXPECT_EQ("0 3 0 0 1 1", text(merge(target, source)));
    EXPECT_EQ((Names{"-", "Spare"}), fieldNames(*target));
    EXPECT_NE(source->getField(1).lock(), target->getField(1).lock()) << "a copy";
    EXPECT_EQ("0 4 0 0 0 0", text(merge(target, source)));
}

// Trees that lie in one another, and cycles.
TEST(AttrContMerger, MergesTreesThatShareContainers) {
    Differing const trees;
    EXPECT_EQ("0 7 0 0 0 0", text(merge(trees.a, trees.a)));

    AttrContainer& inner = *addField(trees.a, "inner", "inner");
    inner.addAttribute(std::make_shared<CustAttr<int>>(7), "n");
    auto const copy = inner.duplicate(CreateType::Deep);
    AttrContMerger::merge(*trees.a, inner, 0, nullptr);
    EXPECT_EQ(0u, differences(*trees.a, *copy)) << "the source is gone with what held it";

    auto const root = named("x");
    auto const part = addField(root, "part", "part");
    merge(part, root);
    EXPECT_EQ("x", part->getName());
    EXPECT_EQ(1u, part->getNumFields());

    auto const ring = named("x"), source = named("x");
    for (auto const& one : {ring, source}) {
        add(one, "v", one == ring ? 1 : 2);
        EXPECT_TRUE(addField(one, "f", "f")->addField(one, "loop", 0));
    }
    EXPECT_EQ("1 2 0 0 0 0", text(merge(ring, source)));
    auto const straight = named("x");
    merge(straight, source);
    EXPECT_EQ("0 3 0 0 0 0", text(merge(straight, source)));
    for (auto const& one : {ring, source})
        EXPECT_TRUE(one->rmField("f"));
}

// What observers do during a merge must not matter to it, and a merge without them makes the trees equal.
TEST(AttrContMerger, StandsWhateverObserversDo) {
    struct Trees {
        Container target, source;
        unsigned int flags = 0;
        int numCalls = 0;
    };
    std::pair<char const*, void (*)(Trees&,
                                    Attribute&)> const handlers[] = {{"remove the attribute",
                                                                      [](Trees& t, Attribute& a) {
                                                                          t.target->rmAttribute(a.getName());
                                                                      }},
                                                                     {"remove all attributes",
                                                                      [](Trees& t, Attribute&) {
                                                                          t.target->rmAllCustomAttributes();
                                                                      }},
                                                                     {"remove those of the source",
                                                                      [](Trees& t, Attribute&) {
                                                                          t.source->rmAllCustomAttributes();
                                                                      }},
                                                                     {"remove fields",
                                                                      [](Trees& t, Attribute&) {
                                                                          for (auto const& tree :
                                                                               {t.target, t.source})
                                                                              while (tree->getNumFields() > 0)
                                                                                  tree->rmField(
                                                                                      std::uint64_t{0});
                                                                      }},
                                                                     {"add members",
                                                                      [](Trees& t, Attribute&) {
                                                                          for (auto const& tree :
                                                                               {t.target, t.source}) {
                                                                              add(tree, "more", t.numCalls);
                                                                              addField(tree, "field0",
                                                                                       "more");
                                                                          }
                                                                      }},
                                                                     {"drop the target",
                                                                      [](Trees& t, Attribute&) {
                                                                          t.target = AttrContainer::create();
                                                                      }},
                                                                     {"drop the source",
                                                                      [](Trees& t, Attribute&) {
                                                                          t.source = AttrContainer::create();
                                                                      }},
                                                                     {"merge again",
                                                                      [](Trees& t, Attribute&) {
                                                                          if (t.numCalls < 5)
                                                                              merge(t.target, t.source,
                                                                                    t.flags);
                                                                      }},
                                                                     {"merge back", [](Trees& t, Attribute&) {
                                                                          if (t.numCalls < 5)
                                                                              merge(t.source, t.target,
                                                                                    t.flags);
                                                                      }}};
    for (auto const& handler : handlers)
        for (unsigned int const flags : {0u, 2u, 16u})
            for (unsigned seed = 0; seed < 8; ++seed) {
                Trees trees{RandomTree(2 * seed).make(), RandomTree(2 * seed + 1).make(), flags};
                Listeners listeners;
                listeners.watch(trees.target);
                for (auto const& observer : listeners.observers)
                    observer->changed = [&trees, &handler](Observable& observable, Cause const&) {
                        if (++trees.numCalls < 50)
                            handler.second(trees, static_cast<Attribute&>(observable));
                        return Action::ExecOk;
                    };
                // Only the handlers' own references are left.
                AttrContMerger::merge(*trees.target, *trees.source, flags, nullptr);
                EXPECT_LT(0, trees.numCalls) << handler.first;
                for (auto const& observer : listeners.observers)
                    observer->changed = nullptr;
                merge(trees.target, trees.source);
                EXPECT_EQ(0u, differences(*trees.target, *trees.source)) << handler.first << flags << seed;
            }
}

TEST(AttrContInfoSetter, AttachesForAScope) {
    auto target = named("x");
    auto const info = named("info");
    {
        AttrContInfoSetter const setter(target, info);
        EXPECT_EQ(info, target->lookupAttrContInfo().lock());
        {
            AttrContInfoSetter copy(target, nullptr);
            copy = setter;
            EXPECT_EQ(info, target->lookupAttrContInfo().lock());
        }
        EXPECT_TRUE(target->lookupAttrContInfo().expired());
    }
    AttrContInfoSetter const setter(target, info);
    target.reset(); // Nothing is left to do for the setter.
    AttrContInfoSetter const nobody(target, info);
}

} // namespace
