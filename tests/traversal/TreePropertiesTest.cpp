// SPDX-License-Identifier: MIT
#include "traversal/TreeFixture.h"

#include <AttributeContainer/Visitors.h>
#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/XMLSerialization.h>

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <stdexcept>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// Pairs of random trees, of which the second is sometimes a changed copy of the first.
class RandomPairs : public ::testing::TestWithParam<unsigned> {
protected:
    Container a = RandomTree(GetParam()).make();
    Container b = GetParam() % 3 ? RandomTree(GetParam() + 1000).make() : changedCopy();

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

TEST_P(RandomPairs, HaveTheSameDifferencesFromBothSides) {
    std::uint64_t const all = differences(*a, *b), inBoth = differences(*a, *b, 3);
    EXPECT_EQ(all, differences(*b, *a));
    EXPECT_EQ(inBoth, differences(*b, *a, 3));
    EXPECT_EQ(differences(*a, *b, 1), differences(*b, *a, 2));
    EXPECT_EQ(all, differences(*a, *b, 1) + differences(*a, *b, 2) - inBoth);
    AttrContComparerKeepDiffs listing;
    EXPECT_EQ(all, listing.compare(*a, *b));
    EXPECT_EQ(all, listing.getNumMismatches());
    AttrContComparerMarkDiffs(1).compare(*a, *b);
    AttrCountMarkedVisitor count;
    a->attributeVisitor(count, true);
    EXPECT_EQ(differences(*a, *b, 1), count.getNumMarkedAttributes());
}

TEST_P(RandomPairs, BecomeEqualByAMerge) {
    for (unsigned int const flags : {0u, 1u, 16u, 32u}) {
        auto const target = a->duplicate(CreateType::Deep), before = b->duplicate(CreateType::Deep);
        std::uint64_t const inBoth = differences(*a, *b, 3);
        std::uint64_t const missing = differences(*a, *b, 2) - inBoth;
        std::uint64_t const surplus = differences(*a, *b, 1) - inBoth;
        AttrContMerger::Result result, again;
        AttrContMerger::merge(*target, *b, flags, &result);
        EXPECT_EQ(0u, differences(*target, *b));
        EXPECT_EQ(0u, differences(*b, *before));
        EXPECT_EQ(inBoth, result.changed);
        if (result.addedFields == 0) {
            EXPECT_EQ(missing, result.addedAttributes);
        }
        if (result.removedFields == 0) {
            EXPECT_EQ(surplus, result.removedAttributes);
        }
        AttrContMerger::merge(*target, *b, flags, &again);
        again.unchanged = 0;
        EXPECT_EQ("0 0 0 0 0 0", text(again));
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

// Calls build trees that are deeper than any stack.
TEST(DeepTrees, AreWalkedUpToALimitAndThenRefused) {
    for (bool const isTooDeep : {false, true}) {
        Container const a = named("x"), b = named("x");
        for (auto const& root : {a, b})
            for (auto [end, level] = std::pair(root, 1); level < (isTooDeep ? 20000 : 1024); ++level)
                end = addField(end, "f", "f");
        AttrCountMarkedVisitor count;
        std::function<void()> const walks[] = {
            [&] { differences(*a, *b); },
            [&] { differences(*a, *named("x")); },
            [&] { AttrContMerger::merge(*a, *b, 0, nullptr); },
            [&] { AttrContMerger::merge(*named("x"), *a, 0, nullptr); },
            [&] { a->duplicate(CreateType::Deep); },
            [&] { a->initRead(); },
            [&] { a->attributeVisitor(count, true); },
        };
        for (auto const& walk : walks) {
            bool isRefused = false;
            try {
                walk();
            } catch (std::length_error const&) {
                isRefused = true;
            }
            EXPECT_EQ(isTooDeep, isRefused) << &walk - walks;
        }
        std::ostringstream out;
        auto const context = std::make_shared<WriteContextBase>();
        auto const exported = XMLSerialization::to(out, *a, context);
        EXPECT_EQ(isTooDeep, exported && exported->getCode() == StreamFailure);
        context->setWriteOnlyMarked(true);
        auto const written = a->writeTo(out, context);
        EXPECT_EQ(isTooDeep, written && written->getCode() == StreamFailure);
    }
}

} // namespace
