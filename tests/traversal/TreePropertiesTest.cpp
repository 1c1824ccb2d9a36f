// SPDX-License-Identifier: MIT
#include "SmallStack.h"
#include "traversal/TreeFixture.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// Pairs of random trees, of which the second is sometimes a changed copy of the first.
class RandomPairs : public ::testing::TestWithParam<unsigned> {
protected:
    Container a = RandomTree(GetParam()).make();
    Container b = GetParam() % 3 ? RandomTree(GetParam() + 1000).make() : changedCopy();

    /// How many attributes are marked, which are not any more.
    static std::uint64_t takeMarks(AttrContainer& tree) {
        AttrCountMarkedVisitor count;
        SetAttrMarksVisitor clear(false, 9);
        tree.attributeVisitor(count, true);
        tree.attributeVisitor(clear, true);
        return count.getNumMarkedAttributes();
    }

    Container changedCopy() const {
        auto const copy = a->duplicate(CreateType::Deep);
        add(copy, "int0", 77);
        copy->rmAttribute("double0");
        copy->rmField("field0");
        addField(copy, "field1", "later");
        return copy;
    }
};

TEST_P(RandomPairs, EqualTheirCopies) {
    for (auto const& tree : {a, b}) {
        auto const copy = tree->duplicate(CreateType::Deep);
        EXPECT_EQ(0u, differences(*tree, *copy));
        EXPECT_EQ(0u, differences(*copy, *tree));
        EXPECT_EQ(0u, differences(*tree, *tree));
        EXPECT_TRUE(tree->isEqualTo(*copy, nullptr, nullptr));
    }
}

TEST_P(RandomPairs, HaveTheSameDifferencesFromBothSidesAndNobodyHears) {
    Listeners listeners;
    for (auto const& tree : {a, b})
        listeners.watch(tree);
    std::uint64_t const all = differences(*a, *b), inBoth = differences(*a, *b, 3);
    EXPECT_EQ(all, differences(*b, *a));
    EXPECT_EQ(inBoth, differences(*b, *a, 3));
    EXPECT_EQ(differences(*a, *b, 1), differences(*b, *a, 2));
    EXPECT_EQ(all, differences(*a, *b, 1) + differences(*a, *b, 2) - inBoth);
    AttrContComparerKeepDiffs listing;
    EXPECT_EQ(all, listing.compare(*a, *b));
    EXPECT_EQ(all, listing.getNumMismatches());
    for (int const mode : {0, 1, 2, 3}) {
        EXPECT_EQ(all, AttrContComparerMarkDiffs(mode).compare(*a, *b));
        for (int const side : {1, 2})
            EXPECT_EQ(mode & side ? differences(*a, *b, side) : 0u, takeMarks(side == 1 ? *a : *b)) << mode;
    }
    EXPECT_EQ(Log(), listeners.log);
    EXPECT_FALSE(Attribute::isObservingBlocked());
}

TEST_P(RandomPairs, BecomeEqualByAMerge) {
    bool const isBlocked = GetParam() % 2 != 0;
    std::optional<BlockObserver> block;
    if (isBlocked)
        block.emplace();
    for (unsigned int const flags : {0u, 1u, 16u, 32u}) {
        auto const target = a->duplicate(CreateType::Deep), before = b->duplicate(CreateType::Deep);
        std::uint64_t const inBoth = differences(*a, *b, 3);
        std::uint64_t const missing = differences(*a, *b, 2) - inBoth;
        std::uint64_t const surplus = differences(*a, *b, 1) - inBoth;
        AttrContMerger::Result result;
        AttrContMerger::merge(*target, *b, flags, &result);
        EXPECT_EQ(0u, differences(*target, *b));
        EXPECT_EQ(0u, differences(*b, *before));
        EXPECT_EQ(inBoth, result.changed);
        EXPECT_EQ(result.addedFields == 0 ? missing : result.addedAttributes, result.addedAttributes);
        EXPECT_EQ(result.removedFields == 0 ? surplus : result.removedAttributes, result.removedAttributes);
        EXPECT_EQ(isBlocked, Attribute::isObservingBlocked());
        // Nothing is left to do, and the counters go on.
        auto const unchanged = result.unchanged;
        std::string const counters = text(result);
        AttrContMerger::merge(*target, *b, flags, &result);
        EXPECT_LT(unchanged, std::exchange(result.unchanged, unchanged));
        EXPECT_EQ(counters, text(result));
        EXPECT_EQ(0u, differences(*target, *b));
    }
}

TEST_P(RandomPairs, LoseNothingByAMergeThatKeeps) {
    std::uint64_t const surplus = differences(*a, *b, 1) - differences(*a, *b, 3);
    AttrContMerger::Result result;
    AttrContMerger::merge(*a, *b, AttrContMerger::KEEP_NON_EXISTENT_IN_SOURCE, &result);
    EXPECT_EQ(0u, differences(*a, *b, 2));
    EXPECT_EQ(surplus, differences(*a, *b, 1));
    EXPECT_EQ(0u, result.removedAttributes + result.removedFields);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomPairs, ::testing::Range(0u, 150u));

/// A root with `levels - 1` below it, one in the other, and the lowest of them.
std::pair<std::shared_ptr<Object>, std::shared_ptr<Object>> chain(bool isField, int levels) {
    auto const root = named<Object>("x");
    auto lowest = root;
    for (int level = 1; level < levels; ++level) {
        auto const below = named<Object>("f");
        EXPECT_TRUE(isField ? lowest->addField(below, "f", 4) : lowest->addChild(below, 0));
        lowest = below;
    }
    return {root, lowest};
}

/// The code of the error that a walk ends with; "" when it works.
std::string endOf(std::function<Result()> const& walk) {
    try {
        Result const result = walk();
        return result ? errorCodeName(result->getCode()) : "";
    } catch (std::length_error const&) {
        return "length_error";
    }
}

// Calls build trees that are deeper than any stack.
TEST(DeepTrees, AreWalkedUpToALimitAndThenRefusedAndAreDestroyed) {
    struct Row {
        char const* what;
        int limit;
        bool entersChildren;
        char const* refusal;
        std::function<Result()> walk;
    };
    std::ostringstream out;
    auto const context = std::make_shared<WriteContextBase>(), marked = std::make_shared<WriteContextBase>();
    marked->setWriteOnlyMarked(true);
    constexpr int none = 1'000'000;
    for (bool const isField : {true, false})
        for (int const levels : {256, 257, 512, 513, 514, 100'000})
            runOnSmallStack([&] {
                std::shared_ptr<Object> a, lowest;
                std::tie(a, lowest) = chain(isField, levels);
                auto const b = chain(isField, std::min(levels, 2000)).first;
                Container const x = named<Object>("x");
                lowest->getAttr(0).lock()->setMarked(true);
                AttrCountMarkedVisitor count;
                std::string path;
                // clang-format off
                Row const rows[] = {
                    {"compare", 512, false, "length_error", [&] { differences(*a, *b); return nullptr; }},
                    {"compare with a small one", 512, false, "length_error", [&] { differences(*x, *a); return nullptr; }},
                    {"merge", 512, false, "length_error", [&] { AttrContMerger::merge(*a, *b, 0, nullptr); return nullptr; }},
                    {"merge into a small one", 513, false, "length_error", [&] { AttrContMerger::merge(*x, *a, 0, nullptr); return nullptr; }},
                    {"copy", 512, false, "length_error", [&] { a->duplicate(CreateType::Deep); return nullptr; }},
                    {"reset", 512, false, "length_error", [&] { a->initRead(); return nullptr; }},
                    {"visit attributes", 512, false, "length_error", [&] { a->attributeVisitor(count, true); return nullptr; }},
                    {"export", 512, false, "StreamFailure", [&] { return XMLSerialization::to(out, *a, context); }},
                    {"write", 256, true, "StreamFailure", [&] { return a->writeTo(out, context); }},
                    {"write what is marked", 256, true, "StreamFailure", [&] { return a->writeTo(out, marked); }},
                    {"equal", none, true, "", [&] { a->isEqualTo(*b, nullptr, nullptr); return nullptr; }},
                    {"path", none, true, "", [&] { path = lowest->inqObjPath().value_or(""); return nullptr; }},
                    {"find", none, true, "", [&] { EXPECT_EQ(a->inqObject(path), isField ? a : lowest); return nullptr; }},
                };
                // clang-format on
                for (Row const& row : rows) {
                    bool const isRefused = levels > row.limit && (isField || row.entersChildren);
                    EXPECT_EQ(isRefused ? row.refusal : "", endOf(row.walk))
                        << row.what << ", " << levels << (isField ? " fields" : " children");
                }
                std::weak_ptr<Object> const gone = lowest;
                lowest.reset();
                a.reset();
                EXPECT_TRUE(gone.expired());
            });
}

} // namespace
