// SPDX-License-Identifier: MIT
#include <AttributeContainer/DataOutFormat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <locale>
#include <random>
#include <sstream>

namespace Zorvan::AttributeContainer {

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

template <class T>
std::string written(T const& value, ModelFormat::Format format = ModelFormat::Text) {
    std::ostringstream out;
    DataOutFormat<T>(out, format).put(value);
    return out.str();
}

// Groups digits by two and has a decimal comma.
class OddNumbers : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\2"; }
    std::string do_truename() const override { return "yes"; }
};

// Takes a number of characters and no more.
class SmallBuffer : public std::streambuf {
public:
    explicit SmallBuffer(std::size_t room) : room_(room) {}
    std::string text;

protected:
    std::streamsize xsputn(char const* from, std::streamsize count) override {
        auto const taken = std::min(static_cast<std::size_t>(count), room_ - text.size());
        text.append(from, taken);
        return static_cast<std::streamsize>(taken);
    }

private:
    std::size_t room_;
};

class ThrowingBuffer : public std::streambuf {
protected:
    std::streamsize xsputn(char const*, std::streamsize) override { throw 1; }
};

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
    for (int i = 0; i < 20000; ++i) {
        T value = std::bit_cast<T>(static_cast<Bits>(random()));
        if (i % 3 == 1)
            value = static_cast<T>(static_cast<double>(random() % 2000000) / 1000 - 1000);
        if (i % 3 == 2)
            value = static_cast<T>(std::pow(10.0, static_cast<double>(random() % 60) - 30));
        if (std::isfinite(value)) {
            ASSERT_EQ(written(value), byStream(value)) << "number " << i;
        }
    }
    for (T const value :
         {std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest(), std::numeric_limits<T>::min(),
          std::numeric_limits<T>::denorm_min(), T(-0.0), T(1e15), T(-1e15), T(123456789012345.0), T(1e16),
          std::nextafter(T(1000), T(2000)), std::nextafter(T(1000), T(0)), std::nextafter(T(1), T(2))}) {
        EXPECT_EQ(written(value), byStream(value));
    }
}

} // namespace

TEST(DataOutFormatTest, FloatsAreWhatTheStreamWritesWithTheirPrecision) {
    compareWithStream<double, std::uint64_t>();
    compareWithStream<float, std::uint32_t>();
}

TEST(DataOutFormatTest, NumbersHaveTheirForm) {
    EXPECT_EQ(written(true), "true");
    EXPECT_EQ(written(false), "false");
    EXPECT_EQ(written<signed char>(-5), "-5");
    EXPECT_EQ(written<unsigned char>(200), "200");
    EXPECT_EQ(written(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(written(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(written(0.0), "0");
    EXPECT_EQ(written(1.0), "1");
    EXPECT_EQ(written(0.1), "0.1");
    EXPECT_EQ(written(123.456), "123.456");
    EXPECT_EQ(written(1234567.891), "1234567.891");
    for (double const value : {INFINITE, -INFINITE, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(written(value), "0");
}

TEST(DataOutFormatTest, ComposedValuesHaveTheirForm) {
    EXPECT_EQ(written(SVec2d<unsigned short>(1, 2)), "1 2");
    EXPECT_EQ(written(SVec2d<int>(-1, 2)), "-1 2 ");
    EXPECT_EQ(written(SVec2d<unsigned int>(1, 2)), "1 2 ");
    EXPECT_EQ(written(SVec2d<double>(0.5, INFINITE)), "0.5 0");
    EXPECT_EQ(written(SVec3d<unsigned short>(1, 2, 3)), "1 2 3");
    EXPECT_EQ(written(SVec3d<int>(1, -2, 3)), "1 -2 3");
    EXPECT_EQ(written(SVec3d<unsigned int>(1, 2, 3)), "1 2 3 ");
    EXPECT_EQ(written(Vec3d<double>(0.123456789012, 0, 0.5)), "0.12345679 0 0.5");
    EXPECT_EQ(written(Vec3d<double>(0.123456789012, 0, 1000)), "0.123456789012 0 1000") << "shared precision";
    EXPECT_EQ(written(Vec4d<float>(1, 2, 3, 0.5F)), "1 2 3 0.5");
    EXPECT_EQ(written(Vec4d<unsigned char>('a', 'b', 0xFF, 'd')), "a b \xFF d");
    EXPECT_EQ(written(Mat4d<double>(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0.5, 0, 0, 1)),
              "1 0 0 0  0 1 0 0  0 0 1 0  0.5 0 0 1  ");
    EXPECT_EQ(written(Mat4d<float>(0.123456789F, 1000, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0)),
              "0.12345679 1000 0 0  0 0 0 0  0 0 0 0  0 0 0 0  ")
        << "each with its own precision";
    EXPECT_EQ(written(StatisticVal<double>{{1, 2, 3, 4}}), "StatisticVal 1[2,3]4");
    StatisticValLimits<double> limits{{1, 2, 3, 4}, {}};
    limits.limits = {SVec2d<double>(1, 2), SVec2d<double>(3, 4), SVec2d<double>(5, 6), SVec2d<double>(7, 8)};
    EXPECT_EQ(written(limits), "StatisticValLimitsEx 1[2,3]4 Limits [1 2,3 4] [5 6,7 8]");
    EXPECT_EQ(written(Time(2021, 3, 4, 5, 6, 7)), "4.3.2021 5:6:7");
    EXPECT_EQ(written(VersionNum("WtLib", 9, 1, 0, 0, 3, "x")), "\"WtLib\" 9.1.0.0.3");
    EXPECT_EQ(written(VersionNum("WtLib", 9, 1, 0, 0, 0, "")), "\"WtLib\" 9.1.0.0");
    EXPECT_EQ(written(uuids::uuid({0x00, 0x1A, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xFF})),
              "001a0203-0405-0607-0809-0a0b0c0d0eff");
}

TEST(DataOutFormatTest, CollectionsStandInBracesAndStringListsBehindACount) {
    EXPECT_EQ(written(std::vector<int>{1, 2, 3}), "{ 1 2 3 } ");
    EXPECT_EQ(written(std::vector<int>{}), "{ } ");
    EXPECT_EQ(written(std::vector<unsigned char>{1, 255}), "{ 1 255 } ");
    EXPECT_EQ(written(std::vector<bool>{true, false}), "{ true false } ");
    EXPECT_EQ(written(std::vector<double>{0.123456789, 1e20, INFINITE}),
              "{ 0.12345679 100000000000000000000 0 } ");
    EXPECT_EQ(written(std::vector<SVec2d<int>>{{1, 2}}), "{ 1 2  } ");
    EXPECT_EQ(written(std::vector<SVec2d<unsigned short>>{{1, 2}}), "{ 1 2 } ");
    EXPECT_EQ(written(std::vector<SVec3d<unsigned int>>{{1, 2, 3}}), "{ 1 2 3  } ");
    EXPECT_EQ(written(std::vector<std::vector<Vec3d<double>>>{{{1, 2, 3}}, {}}), "{ { 1 2 3 }  { }  } ");
    EXPECT_EQ(written(std::set<std::uint64_t>{7, 5}), "{ 5 7 } ");
    EXPECT_EQ(written(std::vector<std::string>{"a", ""}), "2 \"a\" \"\"");
    EXPECT_EQ(written(std::vector<std::string>{}), "0");
    EXPECT_EQ(written(std::set<std::string>{"b", "a"}, ModelFormat::XmlV2), "2 'a' 'b'");
    EXPECT_EQ(written(std::map<std::string, std::string>{{"a", "1"}}), "1 \"a\"=>\"1\"");
}

TEST(DataOutFormatTest, ScanPointsUseThePrecisionOfTheStream) {
    ScanPtColor<Vec3d<float>> const point({0.123456789F, 2, INFINITY}, {1, 2, 3, 255});
    std::ostringstream out;
    out.precision(3);
    DataOutFormat<ScanPtColor<Vec3d<float>>>(out, ModelFormat::Text).put(point);
    EXPECT_EQ(out.str(), "0.123 2 0 1 2 3 255");
    EXPECT_EQ(written(std::vector<ScanPtColor<Vec3d<float>>>{point}), "{ 0.12345679 2 0 1 2 3 255 } ");
}

TEST(DataOutFormatTest, StringsAreQuotedAndEscaped) {
    struct Row {
        std::string text, inText, inXml, inXmlV2;
    };
    Row const rows[] = {
        {"", R"("")", R"("")", "''"},
        {R"(a"b)", R"("a\"b")", R"("a\&quot;b")", R"('a\&quot;b')"},
        {"l\nr\rb\\t\t", "\"l\\nr\\rb\\\\t\t\"", "\"l\\nr\\rb\\\\t\t\"", "'l\\nr\\rb\\\\t\t'"},
        {"\xC3\xA4", R"("\uFFC3\uFFA4")", R"("\uFFC3\uFFA4")", R"('\uFFC3\uFFA4')"},
        {"<&'>", R"("<&'>")", R"("&lt;&amp;&apos;&gt;")", "'&lt;&amp;&apos;&gt;'"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(written(row.text, ModelFormat::Text), row.inText);
        EXPECT_EQ(written(row.text, ModelFormat::Xml), row.inXml);
        EXPECT_EQ(written(row.text, ModelFormat::XmlV2), row.inXmlV2);
        EXPECT_EQ(written(row.text, static_cast<ModelFormat::Format>(7)), row.inText);
    }
}

TEST(DataOutFormatTest, LocalesAndFlagsOfTheStreamDoNotMatter) {
    std::locale const odd(std::locale::classic(), new OddNumbers);
    std::locale const before = std::locale::global(odd);
    std::ostringstream out;
    out.imbue(odd);
    out << std::hex << std::showpos << std::fixed << std::boolalpha;
    out.width(30);
    DataOutFormat<int>(out, ModelFormat::Text).put(1234567);
    DataOutFormat<double>(out, ModelFormat::Text).put(-1234.5);
    DataOutFormat<std::vector<bool>>(out, ModelFormat::Text).put({true});
    DataOutFormat<VersionNum>(out, ModelFormat::Text).put(VersionNum("v", 1000, 2000, 0, 0, 0, ""));
    std::locale::global(before);
    EXPECT_EQ(out.str(), "1234567-1234.5{ true } \"v\" 1000.2000.0.0");
}

TEST(DataOutFormatTest, PrecisionIsLeftAtEight) {
    std::ostringstream out;
    out.precision(3);
    DataOutFormat<int>(out, ModelFormat::Text).put(1);
    EXPECT_EQ(out.precision(), 3);
    DataOutFormat<double>(out, ModelFormat::Text).put(12.5);
    EXPECT_EQ(out.precision(), 8);
    out.precision(3);
    DataOutFormat<std::vector<std::string>>(out, ModelFormat::Text).put({});
    EXPECT_EQ(out.precision(), 8);
}

TEST(DataOutFormatTest, FailuresAreLeftInTheStream) {
    SmallBuffer small(4);
    std::ostream full(&small);
    DataOutFormat<std::string>(full, ModelFormat::Text).put("abcdef");
    EXPECT_TRUE(full.bad());
    EXPECT_EQ(small.text, "\"abc");
    DataOutFormat<int>(full, ModelFormat::Text).put(1);
    EXPECT_EQ(small.text, "\"abc") << "nothing is written to a stream that is not good";

    ThrowingBuffer throwing;
    std::ostream broken(&throwing);
    EXPECT_NO_THROW(DataOutFormat<int>(broken, ModelFormat::Text).put(1));
    EXPECT_TRUE(broken.bad());
    std::ostream strict(&throwing);
    strict.exceptions(std::ios_base::badbit);
    EXPECT_THROW(DataOutFormat<int>(strict, ModelFormat::Text).put(1), std::ios_base::failure);
}

} // namespace Zorvan::AttributeContainer
