// SPDX-License-Identifier: MIT
#include <AttributeContainer/KeyTable.h>

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <random>

using Zorvan::DataStructures::KeyTable;

namespace {

/// Some tokens follow each other, others lie anywhere.
std::uint64_t tokenOf(unsigned number) {
    return number < 30 ? number : number < 40 ? number * 1000 : ~std::uint64_t{0} - (49 - number);
}

TEST(KeyTable, RandomChangesAgreeWithAPlainModel) {
    std::mt19937 random(3);
    KeyTable table;
    std::map<std::uint64_t, std::string> names;
    std::map<std::string, std::uint64_t> meanings;
    for (int i = 0; i < 20000; ++i) {
        if (i < 10000 && i % 50 == 0) { // Tables that stay small, or just stop being so.
            table = KeyTable();
            names.clear();
            meanings.clear();
        }
        std::uint64_t const token = tokenOf(random() % 50);
        std::string const name = "name " + std::to_string(random() % 30);
        if (random() % 3) {
            bool const isNew = names.try_emplace(token, name).second;
            ASSERT_EQ(table.add(token, name), isNew);
            if (isNew)
                meanings.try_emplace(name, token);
        } else {
            std::string const removed = names.contains(token) && random() % 4 ? names[token] : name;
            bool const isThere = names.contains(token) && names[token] == removed;
            std::uint64_t const lower = tokenOf(random() % 50);
            bool const moves = lower < token && !names.contains(lower) && (isThere || !names.contains(token));
            ASSERT_EQ(moves ? table.moveDown(token, lower) : table.remove(token, removed), isThere);
            if (isThere)
                names.erase(token);
            if (isThere && meanings[removed] == token) {
                meanings.erase(removed);
                for (auto const& [other, otherName] : names)
                    if (otherName == removed)
                        meanings.try_emplace(removed, other);
            }
            if (moves && isThere) {
                names[lower] = removed;
                meanings.try_emplace(removed, lower);
            }
        }
        ASSERT_EQ(table.size(), names.size());
        ASSERT_EQ(table.hasRepeatedNames(), meanings.size() < names.size());
        for (unsigned number = 0; number < 50; ++number) {
            std::uint64_t const listed = tokenOf(number);
            std::string const asked = "name " + std::to_string(number);
            ASSERT_EQ(table.getName(listed).value_or(""), names.contains(listed) ? names[listed] : "");
            ASSERT_EQ(table.getToken(asked), meanings.contains(asked) ? meanings[asked] : KeyTable::noToken);
        }
    }
}

TEST(KeyTable, NamesOfConsecutiveTokensAreCompared) {
    std::mt19937 random(5);
    std::string const letters = "abcdefghijklmnopqrstuvwxyz";
    for (unsigned round = 0; round < 400; ++round) {
        // Lengths around those of words; the tables differ in one character of one name, or in nothing.
        unsigned const size = 1 + round % 12, length = random() % 20, last = random() % size;
        std::uint64_t const firstOfA = random() % 5, firstOfB = random() % 5;
        KeyTable a, b;
        bool const isReversed = round % 3 == 0, differs = round % 4 != 0 && length > 0;
        (round % 2 == 0 ? a : b).add(100, "removed below");
        for (unsigned i = 0; i < size; ++i) {
            unsigned const offset = isReversed ? size - 1 - i : i;
            std::string name = letters.substr(offset % 26, 1) + letters.substr(0, length);
            a.add(firstOfA + offset, name);
            if (differs && offset == last)
                name[random() % name.size()] = '#';
            b.add(firstOfB + offset, name);
            if (i == size / 2)
                (round % 2 == 0 ? a : b).remove(100, "removed below");
        }
        EXPECT_EQ(KeyTable::numSameNames(a, firstOfA, b, firstOfB), differs ? last : size);
    }
}

TEST(KeyTable, CopiesAreIndependentAndMovedTablesEmpty) {
    KeyTable table({{5, "a"}, {5, "b"}, {2, "a"}, {1u << 30, "far"}});
    EXPECT_EQ(table.getToken("b"), ~std::uint64_t{0});
    KeyTable copy(table);
    EXPECT_TRUE(copy.remove(5, *copy.findName(5)));
    EXPECT_TRUE(copy.add(1, "c"));
    EXPECT_EQ(table.getToken("a"), 5u);

    KeyTable moved(std::move(copy));
    EXPECT_EQ(moved.getToken("c"), 1u);
    EXPECT_EQ(copy.getToken("c"), KeyTable::noToken);
    EXPECT_TRUE(copy.add(5, "again"));
    copy = moved;
    moved = std::move(table);
    EXPECT_TRUE(moved.add(9, "new"));
    EXPECT_EQ(moved.getToken("far"), 1u << 30);
    EXPECT_EQ(copy.getToken("new"), KeyTable::noToken);
}

TEST(KeyTable, NamesStayWhereTheyAreAndManyTokensOfOneAreNotQuadratic) {
    constexpr std::uint64_t count = 200000;
    KeyTable table({{count, "a name that is too long to be kept inside the string object"}});
    std::string const* const name = table.findName(count);
    auto const start = std::chrono::steady_clock::now();
    for (std::uint64_t token = 0; token < count; ++token)
        ASSERT_TRUE(table.add(token, "same"));
    for (std::uint64_t token = 0; token < count; ++token)
        ASSERT_TRUE(table.getToken("same") == token && table.remove(token, "same"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(table.findName(count), name);
    EXPECT_EQ(table.getToken(*name), count);
}

} // namespace
