// SPDX-License-Identifier: MIT
#include <AttributeContainer/DataOutFormat.h>

#include "StreamFixture.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>

namespace Zorvan::AttributeContainer {

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

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

/// The forms of the values, a bar behind each.
template <class... T>
std::string allWritten(T const&... values) {
    return ((written(values) + "|") + ...);
}

} // namespace

TEST(DataOutFormatTest, FloatsAreWhatTheStreamWritesWithTheirPrecision) {
    compareWithStream<double, std::uint64_t>();
    compareWithStream<float, std::uint32_t>();
}

TEST(DataOutFormatTest, ValuesHaveTheirForm) {
    SVec2d<double> const a(1, 2), b(3, 4);
    EXPECT_EQ(allWritten(true, false, static_cast<signed char>(-5), static_cast<unsigned char>(200),
                         std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::uint64_t>::max(),
                         0.0, INFINITE, -INFINITE, std::nan("")),
              "true|false|-5|200|-9223372036854775808|18446744073709551615|0|0|0|0|");
    EXPECT_EQ(allWritten(SVec2d<unsigned short>(1, 2), SVec2d<int>(-1, 2), SVec2d<unsigned int>(1, 2),
                         SVec2d<double>(0.5, INFINITE), SVec3d<unsigned short>(1, 2, 3),
                         SVec3d<int>(1, -2, 3), SVec3d<unsigned int>(1, 2, 3), Vec4d<float>(1, 2, 3, 0.5F),
                         Vec4d<unsigned char>('a', 'b', 0xFF, 'd')),
              "1 2|-1 2 |1 2 |0.5 0|1 2 3|1 -2 3|1 2 3 |1 2 3 0.5|a b \xFF d|");
    // Vectors share a precision, each number of a matrix has its own.
    EXPECT_EQ(allWritten(Vec3d<double>(0.123456789012, 0, 0.5), Vec3d<double>(0.123456789012, 0, 1000),
                         Mat4d<float>(0.123456789F, 1000, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0.5, 0, 0, 1)),
              "0.12345679 0 0.5|0.123456789012 0 1000|0.12345679 1000 0 0  0 0 0 0  0 0 0 0  0.5 0 0 1  |");
    EXPECT_EQ(allWritten(StatisticVal<double>{{1, 2, 3, 4}},
                         StatisticValLimits<double>{{1, 2, 3, 4}, {a, b, b, a}}, Time(2021, 3, 4, 5, 6, 7),
                         VersionNum("WtLib", 9, 1, 0, 0, 3, "x"),
                         uuids::uuid({0, 0x1A, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xFF})),
              "StatisticVal 1[2,3]4|StatisticValLimitsEx 1[2,3]4 Limits [1 2,3 4] [3 4,1 2]|4.3.2021 5:6:7|"
              "\"WtLib\" 9.1.0.0.3|001a0203-0405-0607-0809-0a0b0c0d0eff|");
}

TEST(DataOutFormatTest, CollectionsStandInBracesAndStringListsBehindACount) {
    EXPECT_EQ(allWritten(std::vector<int>{1, 2, 3}, std::vector<int>{}, std::vector<unsigned char>{1, 255},
                         std::vector<bool>{true, false}, std::vector<double>{0.123456789, 1e20, INFINITE},
                         std::vector<SVec2d<int>>{{1, 2}}, std::vector<SVec2d<unsigned short>>{{1, 2}},
                         std::vector<SVec3d<unsigned int>>{{1, 2, 3}},
                         std::vector<std::vector<Vec3d<double>>>{{{1, 2, 3}}, {}},
                         std::set<std::uint64_t>{7, 5}),
              "{ 1 2 3 } |{ } |{ 1 255 } |{ true false } |{ 0.12345679 100000000000000000000 0 } |{ 1 2  } |"
              "{ 1 2 } |{ 1 2 3  } |{ { 1 2 3 }  { }  } |{ 5 7 } |");
    EXPECT_EQ(allWritten(std::vector<std::string>{"a", ""}, std::vector<std::string>{},
                         std::map<std::string, std::string>{{"a", "1"}}),
              "2 \"a\" \"\"|0|1 \"a\"=>\"1\"|");
    EXPECT_EQ(written(std::set<std::string>{"b", "a"}, ModelFormat::XmlV2), "2 'a' 'b'");
}

TEST(DataOutFormatTest, StringsAreQuotedAndEscaped) {
    std::array<std::string, 4> const rows[] = {
        {"", R"("")", R"("")", "''"},
        {R"(a"b)", R"("a\"b")", R"("a\&quot;b")", R"('a\&quot;b')"},
        {"l\nr\rb\\t\t", "\"l\\nr\\rb\\\\t\t\"", "\"l\\nr\\rb\\\\t\t\"", "'l\\nr\\rb\\\\t\t'"},
        {"\xC3\xA4", R"("\uFFC3\uFFA4")", R"("\uFFC3\uFFA4")", R"('\uFFC3\uFFA4')"},
        {"<&'>", R"("<&'>")", R"("&lt;&amp;&apos;&gt;")", "'&lt;&amp;&apos;&gt;'"}};
    for (auto const& [text, inText, inXml, inXmlV2] : rows)
        EXPECT_EQ(written(text) + written(text, ModelFormat::Xml) + written(text, ModelFormat::XmlV2) +
                      written(text, static_cast<ModelFormat::Format>(7)),
                  inText + inXml + inXmlV2 + inText);
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
    EXPECT_EQ(written(std::vector<ScanPtColor<Vec3d<float>>>{point}), "{ 0.12345679 2 0 1 2 3 255 } ");
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
