// SPDX-License-Identifier: MIT
#include "containers/ApplicationClasses.h"

#include <random>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

bool isSameName(std::string const& a, std::string const& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

/// Compares a list with what it should hold.
void expectHolds(ChildList const& list, std::vector<std::shared_ptr<Object>> const& expected) {
    ASSERT_EQ(expected.size(), list.getNumChildren());
    EXPECT_EQ(nullptr, list.getChild(expected.size()));
    for (std::uint64_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(expected[i], list.getChild(i));
        ASSERT_EQ(i, list.lookupChild(*expected[i]));
        auto const first = std::find_if(expected.begin(), expected.end(), [&](auto const& one) {
            return isSameName(one->getName(), expected[i]->getName());
        });
        ASSERT_EQ(*first, list.inqChild(expected[i]->getName())) << expected[i]->getName();
    }
}

// Additions, removals by position and identity, renames and staged names in any order; in short lists and in
// those that are long enough for indexes.
TEST(ChildListTest, KeepsOrderPositionsAndNamesThroughAnyChanges) {
    for (unsigned int size : {6U, 60U, 400U}) {
        std::mt19937 random(size);
        auto const parent = Object::create();
        std::vector<std::shared_ptr<Object>> expected;
        for (unsigned int step = 0; step < 8 * size; ++step) {
            auto const at = expected.empty() ? 0 : random() % expected.size();
            switch (expected.size() < size / 2 ? 0 : random() % 7) {
            case 0:
            case 1:
                expected.push_back(
                    named<Object>((random() % 2 ? "n" : "N") + std::to_string(random() % size)));
                EXPECT_TRUE(parent->addChild(expected.back(), 4));
                break;
            case 2:
            case 3:
                EXPECT_TRUE(step % 2 ? parent->rmChild(at, 0) : parent->rmChild(*expected[at], 0));
                EXPECT_FALSE(parent->rmChild(*expected[at], 0));
                expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(at));
                break;
            case 4:
                EXPECT_FALSE(expected[at]->setName("n" + std::to_string(random() % size), 0));
                break;
            case 5:
                expected[at]->Attr_name().addNotifyInfo(std::make_shared<CachedAttributeInfo>(
                    std::make_shared<CustAttr<std::string>>("n" + std::to_string(random() % size))));
                Attribute::setIsCachedAttributePending(true);
                if (random() % 2)
                    expected[at]->Attr_name().touch(nullptr, nullptr);
                break;
            default: {
                BlockObserver const unobserved; // The list hears of names that nobody else hears of.
                expected[at]->Attr_name() = expected[random() % expected.size()]->Attr_name();
            }
            }
            if (step % 16 == 0)
                expectHolds(parent->children(), expected);
            if (step % 4 == 0)
                Attribute::setIsCachedAttributePending(false);
        }
        Attribute::setIsCachedAttributePending(false);
        expectHolds(parent->children(), expected);
    }
}

TEST(ChildListTest, NamesOfMembersThatWentAreGivenOutAgain) {
    auto const parent = Object::create();
    for (int i = 0; i < 35; ++i)
        EXPECT_TRUE(i < 20 ? parent->addChild(named<Object>("Box"), 16)
                           : parent->addField(AttrContainer::create(), "Box", 16));
    EXPECT_EQ("Box34", parent->getFieldName(14));
    EXPECT_EQ("Box35", parent->generateUniqueName("Box20"));
    EXPECT_EQ("Box35", parent->generateUniqueName("Box7"));
    EXPECT_TRUE(parent->rmField("Box21"));
    EXPECT_EQ("Box21", parent->generateUniqueName("Box20"));
    EXPECT_EQ("Box35", parent->generateUniqueName("Box22"));
    EXPECT_FALSE(parent->children().getChild(12)->setName("other", 0));
    EXPECT_EQ("Box12", parent->generateUniqueName("Box"));
    EXPECT_TRUE(parent->rmChild(3, 0));
    EXPECT_EQ("Box3", parent->generateUniqueName("Box"));
}

} // namespace
