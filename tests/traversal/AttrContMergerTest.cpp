// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "traversal/TreeFixture.h"

#include "attributes/AttributeFixture.h"

#include <AttributeContainer/BlockObserver.h>

#include <thread>

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

/// In alphabetical order.
Names markedIn(AttrContainer& container) {
    Names names;
    for (std::uint64_t token = 0; token < container.getNumAttributes(); ++token)
        if (auto const attribute = container.getAttr(token).lock(); attribute->isMarked())
            names.push_back(attribute->getName());
    for (std::uint64_t token = 0; token < container.getNumFields(); ++token)
        if (auto const field = container.getField(token).lock())
            for (auto const& name : markedIn(*field))
                names.push_back(name);
    std::sort(names.begin(), names.end());
    return names;
}

TEST(AttrContMerger, DoesAndAnnouncesWhatItsFileSays) {
    std::map<std::string, std::string> texts;
    Container a, b;
    for (auto const& row : dataRows("traversal/merges.txt")) {
        if (row.columns.size() == 2) {
            texts[row[0]] = row[1];
            continue;
        }
        if (row[0] == "merge")
            a = TreeText(texts["a"]).make();
        b = TreeText(texts["b"]).make();
        Listeners listeners;
        listeners.watch(a);
        std::string const counters = text(merge(a, b, row.number(1)));
        std::string const found[] = {counters, std::to_string(differences(*a, *b)), joined(listeners.log),
                                     joined(markedIn(*a)), joined(fieldNames(*a))};
        for (std::size_t i = 0; i < std::size(found); ++i)
            EXPECT_EQ(row[i + 2] == "?" ? found[i] : row[i + 2], found[i]) << row.place;
        for (std::uint64_t token = 0; token < b->getNumFields(); ++token) {
            auto const field = b->getField(token).lock();
            EXPECT_TRUE(!field || field != a->getField(token).lock()) << "a copy: " << row.place;
        }
        EXPECT_FALSE(Attribute::isObservingBlocked());
    }
}

TEST(AttrContMerger, AddsToCountersAndNeedsNone) {
    auto const object = named<Object>("x");
    AttrContMerger::Result result = merge(object, named("x"));
    AttrContMerger::merge(*object, *named("x"), 0, &result);
    EXPECT_EQ("0 2 0 10 0 0", text(result));
    EXPECT_EQ(6u, object->getNumAttributes());
    AttrContMerger::merge(*object, *named("y"), 0, nullptr);
    EXPECT_EQ("y", object->getName());
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
    std::pair<char const*, void (*)(Trees&, Attribute&)> const handlers[] = {
        {"removes it", [](Trees& t, Attribute& a) { t.target->rmAttribute(a.getName()); }},
        {"removes all", [](Trees& t, Attribute&) { t.target->rmAllCustomAttributes(); }},
        {"removes those of the source", [](Trees& t, Attribute&) { t.source->rmAllCustomAttributes(); }},
        {"removes fields",
         [](Trees& t, Attribute&) {
             for (auto const& tree : {t.target, t.source})
                 while (tree->getNumFields() > 0)
                     tree->rmField(std::uint64_t{0});
         }},
        {"adds",
         [](Trees& t, Attribute&) {
             for (auto const& tree : {t.target, t.source}) {
                 add(tree, "more", t.numCalls);
                 addField(tree, "field0", "more");
             }
         }},
        {"drops the target", [](Trees& t, Attribute&) { t.target = AttrContainer::create(); }},
        {"drops the source", [](Trees& t, Attribute&) { t.source = AttrContainer::create(); }},
        {"merges",
         [](Trees& t, Attribute&) {
             if (t.numCalls < 5)
                 merge(t.target, t.source, t.flags);
         }},
        {"merges back",
         [](Trees& t, Attribute&) {
             if (t.numCalls < 5)
                 merge(t.source, t.target, t.flags);
         }},
    };
    for (auto const& [what, handle] : handlers)
        for (unsigned int const flags : {0u, 2u, 16u})
            for (unsigned seed = 0; seed < 8; ++seed) {
                Trees trees{RandomTree(2 * seed).make(), RandomTree(2 * seed + 1).make(), flags};
                Listeners listeners;
                listeners.watch(trees.target);
                for (auto const& observer : listeners.observers)
                    observer->changed = [&, act = handle](Observable& observable, Cause const&) {
                        if (++trees.numCalls < 50)
                            act(trees, static_cast<Attribute&>(observable));
                        return Action::ExecOk;
                    };
                // Only the handlers' own references are left.
                AttrContMerger::merge(*trees.target, *trees.source, flags, nullptr);
                EXPECT_LT(0, trees.numCalls) << what;
                for (auto const& observer : listeners.observers)
                    observer->changed = nullptr;
                merge(trees.target, trees.source);
                EXPECT_EQ(0u, differences(*trees.target, *trees.source)) << what << flags << seed;
            }
}

TEST(AttrContInfoSetter, AttachesWeaklyForAScopeAndAThread) {
    auto target = named("x");
    auto info = named("info");
    {
        AttrContInfoSetter const setter(target, info);
        EXPECT_EQ(info, target->lookupAttrContInfo().lock());
        std::thread([&] { EXPECT_TRUE(target->lookupAttrContInfo().expired()); }).join();
        {
            AttrContInfoSetter copy(target, nullptr);
            copy = setter;
            EXPECT_EQ(info, target->lookupAttrContInfo().lock());
        }
        EXPECT_TRUE(target->lookupAttrContInfo().expired());
    }
    AttrContInfoSetter const setter(target, info);
    info.reset();
    EXPECT_TRUE(target->lookupAttrContInfo().expired());
    target.reset(); // Nothing is left to do for the setter.
    AttrContInfoSetter const nobody(target, info);
}

} // namespace
