// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "traversal/TreeFixture.h"

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

TEST(AttrContComparer, FindsTheDifferencesThatItsFileSays) {
    Container a, b;
    AttrContComparerKeepDiffs listing;
    for (auto const& row : dataRows("traversal/comparisons.txt")) {
        if (row.columns.size() == 2) {
            (row[0] == "a" ? a : b) = TreeText(row[1]).make();
            continue;
        }
        SCOPED_TRACE(row.place);
        int const mode = static_cast<int>(row.number(1));
        Container const &first = row[0] == "back" ? b : a, &second = row[0] == "back" ? a : b;
        listing.setCompareMode(mode);
        std::uint64_t count = listing.compare(*first, *second);
        if (row[4].empty()) {
            EXPECT_EQ(row[3], paths(listing));
            EXPECT_EQ(std::nullopt, listing.getMismatch(listing.getNumMismatches()));
        } else {
            count = AttrContComparer(static_cast<int>(row.number(4)), mode).compare(*first, *second);
        }
        EXPECT_EQ(row.number(2), count);
    }
}

// Wide enough for counterparts to be looked for ahead.
TEST(AttrContComparer, FindsTheOneDifferenceOfWideContainersInDifferentOrders) {
    constexpr int width = 2200, changed = 1234;
    Container const a = AttrContainer::create(), b = AttrContainer::create();
    for (int i = 0; i < width; ++i)
        for (auto const& [tree, number] : {std::pair(a, i), std::pair(b, i * 7 % width)}) {
            int const value = tree == b && number == changed ? -1 : number;
            std::string const name = std::to_string(number);
            add(tree, "n" + name, number);
            add(addField(tree, "f" + name, "f" + name), "x", value);
        }
    AttrContComparerKeepDiffs listing;
    EXPECT_EQ(1U, listing.compare(*a, *b));
    EXPECT_EQ("f1234/x", paths(listing));
}

TEST(AttrContComparer, HasTheToleranceOfEachType) {
    for (auto const& row : dataRows("traversal/tolerances.txt")) {
        auto const expect = [&](std::uint64_t count, std::string const& value) {
            std::string const begin = "x { v<" + row[0] + ">=";
            std::string zero = row[1];
            zero.replace(zero.find('@'), 1, "0");
            auto const a = TreeText(begin + zero + " }").make(), b = TreeText(begin + value + " }").make();
            EXPECT_EQ(1u, differences(*a, *b, 0)) << value << row.place;
            EXPECT_EQ(count, differences(*a, *b, AttrContComparer::WithTolerances)) << value << row.place;
        };
        for (std::string const sign : {"", "-"})
            for (std::size_t const column : {2, 3})
                if (std::string value = row[1]; !row[column].empty()) {
                    value.replace(value.find('@'), 1, sign + row[column]);
                    expect(column - 2, value);
                }
        if (!row[4].empty())
            expect(1, row[4]);
    }
}

/// Writes down what its hooks are told.
class Recording : public AttrContComparer {
public:
    mutable std::string text;

    void reset() const override {
        AttrContComparer::reset();
        text = "reset";
    }
    void enterField(OptionalContainer field) const override {
        AttrContComparer::enterField(field);
        text += " " + (field ? field->get().getName() : "-" + getEmptySlotName());
        text += std::to_string(getFieldStack().size());
    }
    void exitField(OptionalContainer field) const override {
        AttrContComparer::exitField(field);
        text += " /" + (field ? field->get().getName() : "-");
    }
    std::uint64_t handleAttributes(Attribute const* first, Attribute const* second) const override {
        text += first ? " <" : " ";
        text += (first ? first : second)->getName() + (second ? ">" : "");
        return 100;
    }
};

TEST(AttrContComparer, TellsItsHooksOfTheWayAndCountsWhatTheyAnswer) {
    Differing const trees;
    addField<Pump>(addField(trees.b, "deep", "deep"), "p", "p");
    Recording const recording;
    EXPECT_EQ(1600u, recording.compare(*trees.a, *trees.b));
    EXPECT_EQ("reset <n> <d> <onlyA onlyB> onlyB2> cfg1 <w> v> /cfg g1 <Name /g h1 Name> k> /h "
              "deep1 Name> p2 Name> Stages> Motor3 Name> contentType> selectedElement> /Motor -Spare3 /- /p "
              "/deep",
              recording.text);
}

// Instances may be shared with an ancestor, and trees be deeper than documents.
TEST(AttrContComparer, EntersNoPairASecondTimeAtAnyDepth) {
    auto const first = named("x"), second = named("x");
    for (auto const& root : {first, second}) {
        auto end = root;
        for (int i = 0; i < 500; ++i)
            end = addField(end, "f", "f");
        add(end, "v", root == first ? 1 : 2);
        EXPECT_TRUE(end->addField(root, "loop", 0));
    }
    EXPECT_EQ(1u, differences(*first, *second));
    EXPECT_EQ(502u, differences(*first, *named("x"), 0));
    for (auto const& root : {first, second}) // Else nobody would let go of them.
        EXPECT_TRUE(root->rmField("f"));
}

} // namespace
