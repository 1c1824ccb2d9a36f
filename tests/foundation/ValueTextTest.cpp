// SPDX-License-Identifier: MIT
#include <AttributeContainer/ValueText.h>

#include "StreamFixture.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>

using namespace Zorvan;
using AttributeContainer::appendText;

namespace {

template <class T>
std::string textOf(T const& value) {
    std::string text;
    appendText(text, value);
    return text;
}

template <class T>
std::string streamed(T const& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

TEST(ValueText, EachTypeHasItsForm) {
    uuids::uuid const id({0xab, 0x0f});
    std::pair<std::string, char const*> const rows[] = {
        {textOf(static_cast<unsigned char>(0xe4)), "\xe4"},
        {textOf(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615"},
        {textOf(Vec3d<double>(0.5, 1, 1e-7)), "0.5 1 1e-07 "},
        {textOf(Vec4d<float>(1, -2, 3.25f, 1e20f)), "1 -2 3.25 1e+20 "},
        {textOf(id), "ab0f0000-0000-0000-0000-000000000000"},
        {textOf(ScanPtColor<Vec3d<float>>({1, 2.5f, 3}, {10, 0, 255, 65})), "1 2.5 3 10 0 255 65"},
        {textOf(std::vector<bool>{true, false}), "{ true false } "},
        {textOf(std::vector<signed char>{65, 66}), "{ A B } "},
        {textOf(std::set<std::string>{"x y", ""}), "{  x y } "},
        {textOf(std::vector<std::vector<Vec3d<double>>>{{{1, 2, 3}}, {}}), "{ { 1 2 3  }  { }  } "},
        {textOf(std::map<std::string, std::string>{{"b", "y"}, {"a", "x"}}),
         "{ \"a\"=>\"x\" \"b\"=>\"y\" } "},
        {textOf(Mat4d<float>(1, 0.5f, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0, 0, 0, 0, 1)),
         "1, 0.5, 3, 4, 5, 6, 7, 8, 9, 0, 0, 0, 0, 0, 0, 1"}};
    for (auto const& [text, expected] : rows)
        EXPECT_EQ(text, expected);
    EXPECT_EQ(textOf(static_cast<signed char>(0)), std::string(1, '\0'));
    std::string text = "5";
    appendText(text, text);
    EXPECT_EQ(text, "55");
}

TEST(ValueText, NumbersEqualDefaultStreamOutput) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(textOf(-nan) + textOf(static_cast<float>(-nan)), "nannan");
    for (double const value : {0.0, -0.0, 1.0 / 0.0, -1.0 / 0.0})
        EXPECT_EQ(textOf(value), streamed(value));
    std::mt19937_64 random(7);
    for (int i = 0; i < 50000; ++i) {
        auto const bits = random();
        auto const value = std::bit_cast<double>(bits);
        auto const narrow = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
        double const common = (static_cast<double>(bits % 20000001) - 10000000) / 1000;
        ASSERT_EQ(textOf(common), streamed(common)) << bits;
        ASSERT_TRUE(std::isnan(value) || textOf(value) == streamed(value)) << bits;
        ASSERT_TRUE(std::isnan(narrow) || textOf(narrow) == streamed(narrow)) << bits;
    }
}

TEST(ValueText, GlobalLocaleDoesNotMatter) {
    OddGlobalLocale const odd;
    EXPECT_EQ(textOf(Vec3d<double>(1234.5, 1e7, 1)), "1234.5 1e+07 1 ");
    EXPECT_EQ(textOf(1234567), "1234567");
}

} // namespace
