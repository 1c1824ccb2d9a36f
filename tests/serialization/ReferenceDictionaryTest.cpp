// SPDX-License-Identifier: MIT
#include <AttributeContainer/ReferenceDictionary.h>

#include <gtest/gtest.h>

namespace Zorvan::AttributeContainer {
namespace {

/// A pointer that a dictionary can keep; nobody looks at what it points to.
std::shared_ptr<AttrContainer> someContainer() {
    auto const owner = std::make_shared<int>(0);
    return {owner, reinterpret_cast<AttrContainer*>(owner.get())};
}

TEST(ReferenceDictionary, ResolvesWhatWasAnnouncedAndRegistered) {
    ReferenceDictionary dictionary;
    auto const first = someContainer(), second = someContainer();
    EXPECT_FALSE(dictionary.registerReference(7, first)) << "nothing was announced";
    std::vector<std::uint64_t> ids = {42, 7, ~std::uint64_t{0}, 0, 7};
    std::vector<std::uint64_t> const sorted = {0, 7, 7, 42, ~std::uint64_t{0}};
    dictionary.initializeFromVector(ids);
    EXPECT_EQ(ids, sorted);
    for (std::uint64_t const id : std::set<std::uint64_t>(ids.begin(), ids.end())) {
        EXPECT_FALSE(dictionary.resolveReference(id) || dictionary.registerReference(id, nullptr));
        EXPECT_TRUE(dictionary.registerReference(id, first));
        EXPECT_TRUE(dictionary.registerReference(id, first));
        EXPECT_FALSE(dictionary.registerReference(id, second));
        EXPECT_EQ(dictionary.resolveReference(id), first);
    }
    EXPECT_FALSE(dictionary.registerReference(8, first) || dictionary.resolveReference(8) ||
                 dictionary.unregisterReference(8));
    EXPECT_TRUE(dictionary.unregisterReference(42));
    EXPECT_FALSE(dictionary.resolveReference(42));
    EXPECT_TRUE(dictionary.registerReference(42, second));
    dictionary.initializeFromVector(ids);
    EXPECT_FALSE(dictionary.resolveReference(42)) << "announcing anew forgets what was registered";
    EXPECT_EQ(first.use_count(), 1);
}

} // namespace
} // namespace Zorvan::AttributeContainer
