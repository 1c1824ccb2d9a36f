// SPDX-License-Identifier: MIT
#include "traversal/TreeFixture.h"

#include "observation/RecordingObserver.h"

#include <AttributeContainer/BlockObserver.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Zorvan;
using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

std::string const allPaths = "n d onlyA onlyB onlyB2 cfg/w cfg/v g/Name h/Name h/k";

TEST(AttrContComparer, CountsByModeAndListsByPath) {
    Differing const trees;
    struct Row {
        int mode;
        std::uint64_t count;
        std::string paths;
    };
    AttrContComparerKeepDiffs listing;
    for (Row const& row : std::initializer_list<Row>{{0, 10, allPaths},
                                                     {1, 5, "n d onlyA cfg/w g/Name"},
                                                     {2, 8, "n d onlyB onlyB2 cfg/w cfg/v h/Name h/k"},
                                                     {3, 3, "n d cfg/w"},
                                                     {4, 9, allPaths},
                                                     {7, 2, "n d cfg/w"}}) {
        listing.setCompareMode(row.mode);
        EXPECT_EQ(row.count, listing.compare(*trees.a, *trees.b)) << row.mode;
        EXPECT_EQ(row.paths, paths(listing)) << row.mode;
    }
    EXPECT_EQ(std::nullopt, listing.getMismatch(listing.getNumMismatches()));
    EXPECT_EQ(0u, listing.compare(*trees.a, *trees.a));
    EXPECT_EQ(0u, listing.getNumMismatches());
}

TEST(AttrContComparer, MarksTheSideThatTheModeNames) {
    for (int const mode : {0, 1, 2, 3}) {
        Differing const trees;
        AttrContComparerMarkDiffs marking(mode);
        EXPECT_EQ(10u, marking.compare(*trees.a, *trees.b));
        for (auto const& [tree, bit, names] : {std::tuple(trees.a, 1, Names{"n", "d", "onlyA"}),
                                               std::tuple(trees.b, 2, Names{"n", "d", "onlyB", "onlyB2"})})
            for (auto const& name : names)
                EXPECT_EQ((mode & bit) != 0, tree->getAttr(name).lock()->isMarked()) << mode << name;
        EXPECT_FALSE(trees.a->Attr_name().isMarked());
    }
}

TEST(AttrContComparer, LeavesFlagsSwitchesAndObserversAlone) {
    Differing const trees;
    Log log;
    auto const observer = RecordingObserver::make("told", log);
    auto const observed = trees.a->getAttr("n").lock();
    observed->addObserver(*observer, 10, NOTIFY, false);
    observed->addPreObserver(*observer, 10, PRE_NOTIFY, false);
    for (bool const isBlocked : {false, true}) {
        std::optional<BlockObserver> block;
        if (isBlocked)
            block.emplace();
        differences(*trees.a, *trees.b, 4);
        trees.a->isEqualTo(*trees.b, nullptr, nullptr);
        EXPECT_EQ(isBlocked, Attribute::isObservingBlocked());
    }
    EXPECT_EQ(Log(), log);
    EXPECT_FALSE(observed->isMarked());
}

// --- Tolerances

template <class T>
void expectDifferences(T const& a, T const& b, std::uint64_t count, std::string const& what) {
    auto const first = named("x"), second = named("x");
    add(first, "v", a);
    add(second, "v", b);
    EXPECT_EQ(a == b ? 0u : 1u, differences(*first, *second, 0)) << what;
    EXPECT_EQ(count, differences(*first, *second, AttrContComparer::WithTolerances)) << what;
}

/// A value whose last component is `last` and whose others are 0.
template <class T>
T valueOf(double last) {
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(last);
    } else if constexpr (std::is_arithmetic_v<typename T::value_type> && requires { T::size(); }) {
        T value{};
        value[T::size() - 1] = static_cast<typename T::value_type>(last);
        return value;
    } else {
        return {valueOf<typename T::value_type>(0), valueOf<typename T::value_type>(last)};
    }
}

/// The last component differs by less and by more than half of a unit, to both sides.
template <class T>
void expectTolerance(double scale, std::string const& what) {
    for (double const sign : {1.0, -1.0}) {
        expectDifferences(valueOf<T>(0), valueOf<T>(sign * 0.49 / scale), 0, what);
        expectDifferences(valueOf<T>(0), valueOf<T>(sign * 0.51 / scale), 1, what);
    }
    if constexpr (requires(T value) { value.pop_back(); }) {
        T shorter = valueOf<T>(0);
        shorter.pop_back();
        expectDifferences(valueOf<T>(0), shorter, 1, what);
    }
}

TEST(AttrContComparer, HasTheToleranceOfEachType) {
    expectTolerance<double>(1e5, "double");
    expectTolerance<Vec3d<double>>(1e8, "Vec3dd");
    expectTolerance<Vec4d<double>>(1e8, "Vec4dd");
    expectTolerance<Vec3d<float>>(1e8, "Vec3df");
    expectTolerance<Vec4d<float>>(1e8, "Vec4df");
    expectTolerance<SVec2d<double>>(1e8, "SVec2dd");
    expectTolerance<SVec2d<float>>(1e8, "SVec2df");
    expectTolerance<Mat4d<double>>(1e8, "Mat4dd");
    expectTolerance<Mat4d<float>>(1e5, "Mat4df");
    expectTolerance<std::vector<double>>(1e5, "DVector");
    expectTolerance<std::vector<SVec2d<double>>>(1e8, "Vec2ddVector");
    expectTolerance<std::vector<Vec4d<double>>>(1e8, "Vec4ddVector");
    expectTolerance<std::vector<Vec3d<float>>>(1e8, "Vec3dfVector");
    expectTolerance<std::vector<std::vector<Vec3d<double>>>>(1e8, "VecPoly3d");
    expectTolerance<std::vector<Mat4d<double>>>(1e8, "Mat4ddVector");
    expectDifferences(valueOf<std::vector<Vec3d<double>>>(0), valueOf<std::vector<Vec3d<double>>>(1e-12), 1,
                      "a type without a tolerance");
    expectDifferences(valueOf<std::vector<SVec2d<float>>>(0), valueOf<std::vector<SVec2d<float>>>(1e-12), 1,
                      "another one");
    expectDifferences<unsigned char>(1, 2, 1, "an integer");
}

TEST(AttrContComparer, TellsNumbersThatHaveNoDifference) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double largest = std::numeric_limits<double>::max();
    struct Row {
        double a, b;
        std::uint64_t count;
    };
    // Beside a component that differs a little, so that the values are not equal.
    for (Row const& row : std::initializer_list<Row>{{infinite, infinite, 0},
                                                     {infinite, -infinite, 1},
                                                     {infinite, largest, 1},
                                                     {nan, nan, 0},
                                                     {nan, 1, 1},
                                                     {1, nan, 1},
                                                     {nan, infinite, 1},
                                                     {largest, -largest, 1},
                                                     {1e300, 1e299, 1},
                                                     {0, 0.5 / 1e5, 1},
                                                     {-0.0, 0.0, 0}})
        expectDifferences<std::vector<double>>({row.a, 0}, {row.b, 1e-9}, row.count,
                                               std::to_string(row.a) + " " + std::to_string(row.b));
}

TEST(AttrContComparer, GivesNoToleranceToAttributesOfDifferentTypes) {
    auto const pump = named<Pump>("x");
    auto const other = named("x");
    add(other, "Power", 1e-9); // Declared there, added here.
    EXPECT_EQ(1u, AttrContComparer(64, 7).compare(*pump, *other));
}

// --- Who takes part, and who with whom

TEST(AttrContComparer, HeedsTheCategoryOfEitherSide) {
    auto const first = named<Pump>("x"), second = named<Pump>("y"); // "Name" has the category 4.
    std::static_pointer_cast<Attr<double>>(first->getAttr("Power").lock())->setValue(1); // 0
    std::static_pointer_cast<Attr<int>>(first->getAttr("Stages").lock())->setValue(1);   // 2
    std::static_pointer_cast<Attr<std::string>>(first->getAttr(3).lock())->setValue("nameless");
    add(first, "left", 1);
    add(second, "right", 1);
    struct Row {
        int categories;
        std::uint64_t count;
    };
    for (Row const& row : {Row{-1, 4}, {4, 1}, {2, 1}, {64, 2}, {6, 2}, {1, 0}, {0, 0}})
        EXPECT_EQ(row.count, AttrContComparer(row.categories).compare(*first, *second)) << row.categories;
}

TEST(AttrContComparer, MatchesTheNthOfANameWithTheNth) {
    auto const first = named("x"), second = named("x");
    for (int const i : {1, 2, 3}) {
        add(first, "v", i);
        add(addField(first, "f", "own"), "v", i);
    }
    add(second, "w", 0);
    addField(second, "g", "g");
    for (int const i : {1, 5, 3, 4}) {
        add(second, "v", i);
        add(addField(second, "f", "own"), "v", i);
    }
    AttrContComparerKeepDiffs listing;
    EXPECT_EQ(7u, listing.compare(*first, *second));
    EXPECT_EQ("v w v own/v g/Name own/Name own/v", paths(listing));
    EXPECT_EQ(0u, listing.compare(*second, *second->duplicate(CreateType::Deep)));
}

TEST(AttrContComparer, NamesEmptySlotsByTheirNames) {
    auto const first = named<Pump>("x"), second = named<Pump>("x");
    add(second->getField("Motor").lock(), "v", 1);
    auto const spare = named("own");
    EXPECT_TRUE(second->setField(1, spare));
    add(spare, "v", 1);
    AttrContComparerKeepDiffs listing;
    listing.compare(*first, *second);
    EXPECT_EQ("Motor/v Spare/Name Spare/v", paths(listing));
    listing.compare(*second, *first);
    EXPECT_EQ("Motor/v own/Name own/v", paths(listing));
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
        for (int i = 0; i < 1000; ++i)
            end = addField(end, "f", "f");
        add(end, "v", root == first ? 1 : 2);
        EXPECT_TRUE(end->addField(root, "loop", 0));
    }
    EXPECT_EQ(1u, differences(*first, *second));
    EXPECT_EQ(1002u, differences(*first, *named("x"), 0));
    for (auto const& root : {first, second}) // Else nobody would let go of them.
        EXPECT_TRUE(root->rmField("f"));
}

} // namespace
