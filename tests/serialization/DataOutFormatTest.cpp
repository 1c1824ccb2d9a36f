// SPDX-License-Identifier: MIT
#include <AttributeContainer/DataOutFormat.h>

#include "StreamFixture.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>

namespace Zorvan::AttributeContainer {

namespace {

template <class T>
std::string written(T const& value, ModelFormat::Format format = ModelFormat::Text) {
    std::ostringstream out;
    DataOutFormat<T>(out, format).put(value);
    return out.str();
}

template <class T>
std::string byStream(T value) {
    std::ostringstream out;
    double const magnitude = std::abs(static_cast<double>(value));
    int precision = 1;
    if (magnitude > 0)
        precision = magnitude < 1 ? 8 : static_cast<int>(std::ceil(std::log10(std::abs(value)))) + 9;
    out.imbue(std::locale::classic());
    out.precision(precision);
    out << value;
    return out.str();
}

template <class T, class Bits>
void compareWithStream() {
    std::mt19937_64 random(20); // NOLINT: the same numbers in every run
    for (int i = 0; i < 10000; ++i) {
        auto const number = static_cast<double>(random() % 2000000);
        for (T const value :
             {std::bit_cast<T>(static_cast<Bits>(random())), static_cast<T>(number / 1000 - 1000),
              static_cast<T>(std::pow(10.0, std::fmod(number, 60) - 30))})
            ASSERT_TRUE(!std::isfinite(value) || written(value) == byStream(value)) << byStream(value);
    }
    using Limits = std::numeric_limits<T>;
    for (T const value :
         {Limits::max(), Limits::lowest(), Limits::min(), Limits::denorm_min(), T(-0.0), T(0.1), T(1e15),
          T(-1e15), T(123456789012345.0), T(1e16), std::nextafter(T(1000), T(2000)),
          std::nextafter(T(1000), T(0)), std::nextafter(T(1), T(2))})
        EXPECT_EQ(written(value), byStream(value));
}

} // namespace

TEST(DataOutFormatTest, FloatsAreWhatTheStreamWritesWithTheirPrecision) {
    compareWithStream<double, std::uint64_t>();
    compareWithStream<float, std::uint32_t>();
    EXPECT_EQ(written(std::nan("")), "0");
}

TEST(DataOutFormatTest, LocalesAndFlagsOfTheStreamDoNotMatter) {
    OddGlobalLocale const odd;
    std::ostringstream out;
    out.imbue(oddLocale());
    out << std::hex << std::showpos << std::fixed << std::boolalpha;
    out.width(30);
    DataOutFormat<int>(out, ModelFormat::Text).put(1234567);
    DataOutFormat<double>(out, ModelFormat::Text).put(-1234.5);
    DataOutFormat<std::vector<bool>>(out, ModelFormat::Text).put({true});
    DataOutFormat<VersionNum>(out, ModelFormat::Text).put(VersionNum("v", 1000, 2000, 0, 0, 0, ""));
    EXPECT_EQ(out.str(), "1234567-1234.5{ true } \"v\" 1000.2000.0.0");
}

TEST(DataOutFormatTest, PrecisionIsLeftAtEightAndOnlyScanPointsUseIt) {
    ScanPtColor<Vec3d<float>> const point({0.123456789F, 2, INFINITY}, {1, 2, 3, 255});
    std::ostringstream out;
    out.precision(3);
    DataOutFormat<int>(out, ModelFormat::Text).put(1);
    DataOutFormat<ScanPtColor<Vec3d<float>>>(out, ModelFormat::Text).put(point);
    EXPECT_EQ(out.precision(), 3);
    DataOutFormat<double>(out, ModelFormat::Text).put(12.5);
    EXPECT_EQ(out.precision(), 8);
    EXPECT_EQ(out.str(), "10.123 2 0 1 2 3 25512.5");
}

TEST(DataOutFormatTest, FailuresAreLeftInTheStream) {
    std::stringbuf readOnly("", std::ios_base::in);
    std::ostream full(&readOnly);
    DataOutFormat<std::string>(full, ModelFormat::Text).put("abcdef");
    EXPECT_TRUE(full.bad());
    std::ostringstream failed;
    failed.setstate(std::ios_base::failbit);
    DataOutFormat<int>(failed, ModelFormat::Text).put(1);
    EXPECT_EQ(failed.str(), "") << "nothing is written to a stream that is not good";

    BreakingBuffer throwing;
    std::ostream broken(&throwing);
    EXPECT_NO_THROW(DataOutFormat<int>(broken, ModelFormat::Text).put(1));
    EXPECT_TRUE(broken.bad());
    broken.clear();
    broken.exceptions(std::ios_base::badbit);
    EXPECT_THROW(DataOutFormat<int>(broken, ModelFormat::Text).put(1), std::ios_base::failure);
}

} // namespace Zorvan::AttributeContainer
