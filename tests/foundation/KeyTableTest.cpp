// SPDX-License-Identifier: MIT
#include <AttributeContainer/KeyTable.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <random>
#include <string>

using Zorvan::DataStructures::KeyTable;

namespace {

TEST(KeyTable, FirstTokenKeepsTheNameAndFirstNameKeepsTheToken) {
    KeyTable const table({{4, "a"}, {2, "a"}, {4, "b"}, {7, "c"}});
    EXPECT_EQ(table.size(), 3u);
    EXPECT_EQ(table.getToken("a"), 4u);
    EXPECT_EQ(table.getName(4), "a");
    EXPECT_EQ(table.getName(2), "a");
    EXPECT_EQ(table.getToken("b"), KeyTable::noToken);
    EXPECT_EQ(table.getToken("c"), 7u);
    EXPECT_EQ(table.getName(5), std::nullopt);
    EXPECT_EQ(table.findName(5), nullptr);
}

TEST(KeyTable, UnknownNameIsAllOnes) {
    EXPECT_EQ(KeyTable().getToken(""), ~std::uint64_t{0});
    EXPECT_EQ(KeyTable({{0, "a"}}).getToken("b"), ~std::uint64_t{0});
}

TEST(KeyTable, RemovedTokenLeavesTheNameToTheLowestThatHasIt) {
    KeyTable table({{5, "a"}, {9, "a"}, {3, "a"}, {7, "b"}});
    EXPECT_FALSE(table.remove(5, "b"));
    EXPECT_FALSE(table.remove(6, "a"));
    EXPECT_EQ(table.size(), 4u);
    EXPECT_TRUE(table.remove(5, *table.findName(5)));
    EXPECT_EQ(table.getToken("a"), 3u);
    EXPECT_EQ(table.findName(5), nullptr);
    EXPECT_TRUE(table.remove(3, "a"));
    EXPECT_EQ(table.getToken("a"), 9u);
    EXPECT_TRUE(table.remove(9, "a"));
    EXPECT_EQ(table.getToken("a"), KeyTable::noToken);
    EXPECT_EQ(table.size(), 1u);
    EXPECT_TRUE(table.add(5, "b"));
    EXPECT_EQ(table.getToken("b"), 7u);
}

TEST(KeyTable, RandomChangesAgreeWithAPlainModel) {
    std::mt19937 random(3);
    KeyTable table;
    std::map<std::uint64_t, std::string> names;
    std::map<std::string, std::uint64_t> meanings;
    for (int i = 0; i < 20000; ++i) {
        std::uint64_t const token = random() % 40;
        std::string const name(1, static_cast<char>('a' + random() % 6));
        if (random() % 2) {
            bool const isNew = names.try_emplace(token, name).second;
            ASSERT_EQ(table.add(token, name), isNew);
            if (isNew)
                meanings.try_emplace(name, token);
        } else {
            bool const isThere = names.contains(token) && names[token] == name;
            ASSERT_EQ(table.remove(token, name), isThere);
            if (isThere) {
                names.erase(token);
                if (meanings[name] == token) {
                    meanings.erase(name);
                    for (auto const& [other, otherName] : names)
                        if (otherName == name)
                            meanings.try_emplace(name, other);
                }
            }
        }
        ASSERT_EQ(table.size(), names.size());
        ASSERT_EQ(table.getToken(name), meanings.contains(name) ? meanings[name] : KeyTable::noToken);
    }
}

TEST(KeyTable, OneNameForManyTokensIsNotQuadratic) {
    KeyTable table;
    constexpr std::uint64_t count = 200000;
    auto const start = std::chrono::steady_clock::now();
    for (std::uint64_t token = 0; token < count; ++token)
        ASSERT_TRUE(table.add(token, "same"));
    for (std::uint64_t token = 0; token < count; ++token) {
        ASSERT_EQ(table.getToken("same"), token);
        ASSERT_TRUE(table.remove(token, "same"));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

} // namespace
