// SPDX-License-Identifier: MIT
#include <AttributeContainer/ValueText.h>

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
    stream.imbue(std::locale::classic());
    stream << value;
    return stream.str();
}

// Attributes show the form of each type that they hold.
TEST(ValueText, TextIsAppended) {
    EXPECT_EQ(textOf(ScanPtColor<Vec3d<float>>({1, 2.5f, 3}, {10, 0, 255, 65})), "1 2.5 3 10 0 255 65");
    EXPECT_EQ(textOf(std::vector{ScanPtColor<Vec3d<float>>()}), "{ 0 0 0 0 0 0 0 } ");
    EXPECT_EQ(textOf(std::numeric_limits<long long>::min()) + textOf(~0ULL),
              "-922337203685477580818446744073709551615");
    EXPECT_EQ(textOf(std::set<std::string>{"x y", ""}), "{  x y } ");
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

} // namespace
