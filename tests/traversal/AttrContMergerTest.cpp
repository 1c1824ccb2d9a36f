// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "traversal/TreeFixture.h"

#include <thread>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

AttrContMerger::Result merge(Container const& target, Container const& source, unsigned int flags = 0) {
    AttrContMerger::Result result;
    AttrContMerger::merge(*target, *source, flags, &result);
    return result;
}

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
        for (auto const& observer : listeners.observers)
            observer->changed = [&](Observable&, Cause const&) {
                bool const isLast = row.number(1) & AttrContMerger::TRIGGER_OBSERVERS_AFTER_MERGE_IS_COMPLETE;
                EXPECT_TRUE(!isLast || row[6] == joined(fieldNames(*a))) << row.place;
                return Action::ExecOk;
            };
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
    using Act = void (*)(Container & tree, Container const& other, unsigned int flags, Attribute& announced);
    std::pair<char const*, Act> const acts[] = {
        {"removes it",
         [](auto& tree, auto&, auto, auto& announced) { tree->rmAttribute(announced.getName()); }},
        {"removes attributes", [](auto& tree, auto&, auto, auto&) { tree->rmAllCustomAttributes(); }},
        {"removes fields", [](auto& tree, auto&, auto, auto&) { tree->rmAllCustomFields(); }},
        {"adds",
         [](auto& tree, auto&, auto, auto&) {
             add(tree, "more", 1);
             addField(tree, "field0", "more");
         }},
        {"drops", [](auto& tree, auto&, auto, auto&) { tree = AttrContainer::create(); }},
        {"merges", [](auto& tree, auto& other, auto flags, auto&) { merge(tree, other, flags); }},
    };
    for (auto const& [what, act] : acts)
        for (unsigned int const flags : {0u, 2u, 16u})
            for (unsigned seed = 0; seed < 16; ++seed) {
                Container target = RandomTree(seed).make(), source = RandomTree(seed + 16).make();
                Container &changed = seed % 2 ? target : source, &other = seed % 2 ? source : target;
                Listeners listeners;
                listeners.watch(target);
                int numCalls = 0;
                for (auto const& observer : listeners.observers)
                    observer->changed = [&, act = act](Observable& observable, Cause const&) {
                        if (++numCalls < 10)
                            act(changed, other, flags, static_cast<Attribute&>(observable));
                        return Action::ExecOk;
                    };
                // Only the handlers' own references are left.
                AttrContMerger::merge(*target, *source, flags, nullptr);
                EXPECT_LT(0, numCalls) << what;
                for (auto const& observer : listeners.observers)
                    observer->changed = nullptr;
                merge(target, source);
                EXPECT_EQ(0u, differences(*target, *source)) << what << flags << seed;
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
