// SPDX-License-Identifier: MIT
#include <AttributeContainer/ValueText.h>

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

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
    stream.imbue(std::locale::classic());
    stream << value;
    return stream.str();
}

TEST(ValueText, EachTypeHasItsForm) {
    uuids::uuid id;
    id[0] = 0xab;
    id[15] = 0x0f;
    Mat4d<float> matrix;
    matrix[1] = 0.5f;
    struct {
        std::string text;
        char const* expected;
    } const rows[] = {
        {textOf(true), "true"},
        {textOf(false), "false"},
        {textOf(static_cast<signed char>(65)), "A"},
        {textOf(static_cast<unsigned char>(0xe4)), "\xe4"},
        {textOf(static_cast<short>(-32768)), "-32768"},
        {textOf(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808"},
        {textOf(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615"},
        {textOf(std::string("a \"b\"")), "a \"b\""},
        {textOf(Vec3d<double>(0.5, 1, 1e-7)), "0.5 1 1e-07 "},
        {textOf(Vec4d<float>(1, -2, 3.25f, 1e20f)), "1 -2 3.25 1e+20 "},
        {textOf(SVec2d<int>(-1, 7)), "-1 7 "},
        {textOf(SVec3d<unsigned short>(1, 2, 65535)), "1 2 65535 "},
        {textOf(matrix), "0, 0.5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0"},
        {textOf(uuids::uuid()), "00000000-0000-0000-0000-000000000000"},
        {textOf(id), "ab000000-0000-0000-0000-00000000000f"},
        {textOf(ScanPtColor<Vec3d<float>>({1, 2.5f, 3}, {10, 0, 255, 65})), "1 2.5 3 10 0 255 65"},
        {textOf(std::vector<int>{}), "{ } "},
        {textOf(std::vector<int>{1, 2}), "{ 1 2 } "},
        {textOf(std::vector<bool>{true, false}), "{ true false } "},
        {textOf(std::vector<signed char>{65, 66}), "{ A B } "},
        {textOf(std::vector<std::string>{"x y", ""}), "{ x y  } "},
        {textOf(std::vector<std::vector<Vec3d<double>>>{{{1, 2, 3}}}), "{ { 1 2 3  }  } "},
        {textOf(std::set<std::string>{"b", "a"}), "{ a b } "},
        {textOf(std::map<std::string, std::string>{{"b", "y"}, {"a", "x"}}),
         "{ \"a\"=>\"x\" \"b\"=>\"y\" } "},
    };
    for (auto const& row : rows)
        EXPECT_EQ(row.text, row.expected);
    EXPECT_EQ(textOf(static_cast<signed char>(0)), std::string(1, '\0'));
    EXPECT_EQ(textOf(std::vector<Mat4d<double>>(2)).size(), 2 + 2 * (1 + 16 + 30) + 2u);
}

TEST(ValueText, TextIsAppended) {
    std::string text = "old ";
    appendText(text, 5);
    appendText(text, text);
    EXPECT_EQ(text, "old 5old 5");
}

TEST(ValueText, NaNsPrintAlikeAndInfinitiesAsStreamsDo) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    for (double const value : {nan, -nan, std::bit_cast<double>(0xfff0000000000001u)})
        EXPECT_EQ(textOf(value), "nan");
    EXPECT_EQ(textOf(-std::numeric_limits<float>::quiet_NaN()), "nan");
    for (double const sign : {1.0, -1.0}) {
        double const infinity = sign * std::numeric_limits<double>::infinity();
        EXPECT_EQ(textOf(infinity), streamed(infinity));
        EXPECT_EQ(textOf(sign * 0.0), streamed(sign * 0.0));
    }
}

TEST(ValueText, NumbersEqualDefaultStreamOutput) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 50000; ++i) {
        auto const bits = random();
        auto const value = std::bit_cast<double>(bits);
        auto const narrow = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
        if (std::isnan(value) || std::isnan(narrow))
            continue;
        double const common =
            static_cast<double>(static_cast<std::int64_t>(bits % 20000001) - 10000000) / 1000;
        ASSERT_EQ(textOf(value), streamed(value)) << bits;
        ASSERT_EQ(textOf(narrow), streamed(narrow)) << bits;
        ASSERT_EQ(textOf(common), streamed(common)) << bits;
    }
}

TEST(ValueText, GlobalLocaleDoesNotMatter) {
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale const before = std::locale::global(std::locale(std::locale::classic(), new Comma));
    std::string const number = textOf(1234.5);
    std::string const integer = textOf(1234567);
    std::locale::global(before);
    EXPECT_EQ(number, "1234.5");
    EXPECT_EQ(integer, "1234567");
}

} // namespace
