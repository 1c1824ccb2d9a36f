// SPDX-License-Identifier: MIT
#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/DataOutFormat.h>

#include "StreamFixture.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>

namespace Zorvan::AttributeContainer {

namespace {

constexpr auto TEXT = ModelFormat::Text;
constexpr auto XML = ModelFormat::XmlV2;

using Point = ScanPtColor<Vec3d<float>>;
using Strings = std::vector<std::string>;
using Map = std::map<std::string, std::string>;

constexpr auto MOST = std::numeric_limits<std::uint64_t>::max();
constexpr auto LEAST = std::numeric_limits<std::int64_t>::min();
std::string const awkward = "q\" b\\ a' {}<>&amp;\n\r\t\xC3\xA4 \\n \\u00FF\\";

/// What was read, and how it left the stream.
template <class T>
struct Outcome {
    T value;
    std::ios_base::iostate state;
    std::string rest;
    [[nodiscard]] bool failed() const { return (state & std::ios_base::failbit) != 0; }
};

template <class T>
Outcome<T> readFrom(std::string const& text, ModelFormat::Format format = TEXT) {
    std::istringstream in(text);
    DataInFormat<T> reader(in, format);
    T value = reader.get();
    auto const state = in.rdstate();
    return {std::move(value), state, restOf(in)};
}

template <class T>
struct Row {
    ModelFormat::Format format;
    std::string document;
    T value;
    std::string rest;
    bool fails = false;
};

template <class T>
void check(std::initializer_list<Row<T>> rows) {
    for (auto const& row : rows) {
        auto const outcome = readFrom<T>(row.document, row.format);
        EXPECT_TRUE(outcome.value == row.value) << row.document;
        EXPECT_EQ(outcome.rest, row.rest) << row.document;
        EXPECT_EQ(outcome.failed(), row.fails) << row.document;
    }
}

/// Writes and reads each value in both renderings, followed by what follows it in a document.
template <class... T>
void expectReadBack(T const&... values) {
    auto const check = []<class Value>(Value const& value, ModelFormat::Format format,
                                       std::string const& end) {
        std::stringstream stream;
        DataOutFormat<Value>(stream, format).put(value);
        std::string const text = stream.str();
        stream << end;
        EXPECT_TRUE(DataInFormat<Value>(stream, format).take() == value && stream.good()) << text;
        stream >> std::ws;
        EXPECT_EQ(restOf(stream), end.substr(end.find_first_not_of('\n'))) << text;
    };
    (check(values, TEXT, "\n}"), ...);
    (check(values, XML, "\" />\n"), ...);
}

/// Numbers, and what is none, a bar between them.
constexpr char const* NUMBERS =
    "5|-5|+5 |  7x|| |-|+-1|x|007|0|-0|0x10|1e|1e+|1e5|1E-3z|1.5.5|.5|-.5|.|1.|5\"|000.0001|1e0002|"
    "32767|32768|-32769|65535|65536|-65535|-65536|2147483648|-2147483649|4294967296|-4294967295|"
    "9223372036854775808|-9223372036854775809|18446744073709551615|18446744073709551616|"
    "-18446744073709551616|99999999999999999999999|1e400|-1e400|1e-400|-1e-400|4.9e-324|1e39|-1e39|"
    "1e-39|1e-50|1e99999999999999999999|1e-99999999999999999999|0e99999999999|inf|nan|1,000|1_000|"
    "1.#IND|0.00000000000000000000000000000000000000000000000000000000000000000000001e72|"
    "123456789012345678901234567890123456789012345678901234567890123456789012345678901234567890e-80";

template <class T>
void compareWithStream() {
    std::istringstream numbers(NUMBERS);
    for (std::string text; std::getline(numbers, text, '|');) {
        auto const ours = readFrom<T>(text);
        std::istringstream in(text);
        T value{};
        in >> value;
        EXPECT_EQ(ours.value, value) << text;
        EXPECT_EQ(std::signbit(static_cast<double>(ours.value)), std::signbit(static_cast<double>(value)))
            << text;
        // A floating-point number beyond the range is no failure here.
        if (std::is_floating_point_v<T> &&
            std::abs(static_cast<double>(value)) >= static_cast<double>(std::numeric_limits<T>::max()))
            in.clear(in.rdstate() & ~std::ios_base::failbit);
        EXPECT_EQ(ours.state, in.rdstate()) << text;
        EXPECT_EQ(ours.rest, restOf(in)) << text;
    }
}

} // namespace

TEST(DataInFormatTest, NumbersAreReadAsTheStreamOperatorReadsThem) {
    auto const compareAll = []<class... T>(T...) { (compareWithStream<T>(), ...); };
    compareAll(short{}, static_cast<unsigned short>(0), 0, 0U, LEAST, MOST, 0.F, 0.0);
}

// What attributes do not hold, and the limits of what they do.
TEST(DataInFormatTest, EveryKindOfValueIsReadBack) {
    using Polygons = std::vector<std::vector<Vec3d<double>>>;
    Point const point({1.5F, 2, -3}, {0, 1, 128, 255});
    SVec2d<double> const pair(0.5, 1000);
    expectReadBack(false, static_cast<signed char>(-128), static_cast<unsigned char>(255), MOST, LEAST, 0.5F,
                   -1e30F, 123.5F, 1e-30F, 0.1, -1e300, 123.456, 1e-300, 1234567.891, 1e23, std::string(),
                   awkward, std::string("\0x", 2), uuids::uuid(), Vec4d<unsigned char>('a', '"', 0xFF, 0),
                   point, StatisticVal<double>{{1, 2.5, -3, 4}},
                   StatisticValLimits<double>{{1, 2, 3, 4.5}, {pair, SVec2d<double>(3, 4), pair, pair}},
                   Time(2021, 12, 31, 23, 59, 58));
    expectReadBack(Map{}, Map{{"", awkward}, {awkward, ""}}, std::set<std::string>{"a", awkward},
                   std::set<std::uint64_t>{3, MOST}, Strings{}, Strings{"{", awkward, ""},
                   std::vector<signed char>{-1, 65}, std::vector<double>{0.5, 1e300},
                   std::vector<Point>{point, Point()}, Polygons{}, Polygons{{{1, 2, 3}}, {}, {{4, 5, 6}}});
}

TEST(DataInFormatTest, StringsFollowTheRulesOfTheirRendering) {
    using String = Row<std::string>;
    check({String{TEXT, R"( "a\"b\\" x)", "a\"b\\", " x"},
           String{TEXT, R"("a\nb\rc\u00fa\uFFC3")", "a\nb\rc\xFA\xC3", ""},
           String{TEXT, R"("a\\\"b" x)", "a\\\"b", " x"},
           // An unknown escape, and one without four digits, are as they are.
           String{TEXT, R"("a\tb\n")", R"(a\tb\n)", ""}, String{TEXT, R"("a\n\u12G4")", R"(a\n\u12G4)", ""},
           String{TEXT, R"("\u123")", R"(\u123)", ""}, String{TEXT, "abc", "", "abc"},
           String{TEXT, "'abc'", "", "'abc'"}, String{TEXT, "\"cut", "cut", "", true},
           String{TEXT, R"("cut\)", R"(cut\)", "", true}, String{TEXT, "", "", "", true},
           String{TEXT, "\"&lt;\"", "&lt;", ""}, String{ModelFormat::Xml, "\"&lt;'\"", "&lt;'", ""},
           String{XML, "'&lt;&gt;&quot;&apos;&amp;&foo;&'\" />", "<>\"'&&foo;&", "\" />"},
           String{XML, "'&amp;lt;&amp;amp;&amp;#1;'", "&lt;&amp;&#1;", ""},
           String{XML, R"('a\&quot;b\n"')", "a\"b\n\"", ""}, String{XML, R"('a\'b)", "a\\", "b"},
           String{XML, "\"abc\"", "", "\"abc\""}, String{XML, "<Name x='q' />", "Name", "'q' />"},
           String{XML, "'cut", "cut", "", true}, String{XML, "<Name x", "Name", "", true}});
}

TEST(DataInFormatTest, WordsEndWhereTheirRenderingSaysSo) {
    check<bool>({{TEXT, " TrUe x", true, " x"},
                 {TEXT, "true", true, ""},
                 {TEXT, "truex", false, ""},
                 {TEXT, R"("tr\ue")", true, ""}, // a token may be quoted
                 {XML, "True\" />", true, "\" />"},
                 {TEXT, "", false, "", true}});
    check<unsigned char>({{XML, "200\" />", 200, "\" />"}});
    using Char = Row<signed char>;
    check({Char{TEXT, "-7 x", -7, " x"}, Char{TEXT, "128", 127, "", true}, Char{TEXT, "-129", -128, "", true},
           Char{TEXT, "1.5", 1, "", true}, Char{TEXT, "A", 0, "", true}, Char{TEXT, "", 0, "", true},
           Char{TEXT, "99999999999999999999", 127, "", true}});
    uuids::uuid const upper({0xAB, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    check<uuids::uuid>(
        {{TEXT, "{AB01-02030405-0607-0809-0A0B0C0D0E0F} x", upper, " x"}, {TEXT, "ab010203", {}, "", true}});
}

TEST(DataInFormatTest, NumbersBeyondTheRangeAreInfiniteOrTheLargestThereIs) {
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    constexpr float LARGEST = std::numeric_limits<float>::max();
    using Double = Row<double>;
    check({Double{TEXT, "1.#INF 5", INFINITE, " 5"}, Double{TEXT, "-1.#inf", -INFINITE, ""},
           Double{TEXT, "1.#IND", 1, "#IND"}, Double{TEXT, "1.#IN", 1, "#IN"}, Double{TEXT, "1.#", 1, "#"},
           Double{TEXT, "2.#INF", 2, "#INF"}});
    errno = 5;
    EXPECT_FALSE(readFrom<Vec3d<double>>("1e999 -1e999 1e-999").failed());
    EXPECT_EQ(errno, 5);
    check<Point>({{TEXT, "1e300 -1e300 1.#INF 0 1 2 255",
                   Point({LARGEST, -LARGEST, static_cast<float>(INFINITE)}, {0, 1, 2, 255}), ""},
                  // nothing is read after a failure
                  {TEXT, "0 0 0 7 256 2 255", Point({}, {7, 255, 0, 0}), " 2 255", true}});
}

TEST(DataInFormatTest, CollectionsEndAtABraceAtTheirAttributeOrAtAFailure) {
    using Ints = Row<std::vector<int>>;
    check({Ints{TEXT, " { 1 2 3 } x", {1, 2, 3}, " x"}, Ints{TEXT, "{1 2}", {1, 2}, ""},
           Ints{TEXT, "[ 1 }", {1}, ""}, Ints{TEXT, "{ }", {}, ""}, Ints{TEXT, "{}", {}, ""},
           Ints{TEXT, "{ 1 2", {1, 2}, "", true}, Ints{TEXT, "{ 1 x 2 }", {1}, "x 2 }", true},
           Ints{TEXT, "{ 1 99999999999 2 }", {1}, " 2 }", true}, Ints{TEXT, "", {}, "", true},
           Ints{XML, "{ 1 2 } \" />", {1, 2}, " \" />"}, Ints{XML, "{ 1 2\" />", {1, 2}, "\" />"},
           Ints{XML, "\" />", {}, "\" />"}});
    check<std::vector<bool>>(
        {{TEXT, "{ true", {true}, "", true}, {XML, "{ true false\" />", {true, false}, "\" />"}});
    check<std::vector<signed char>>({{XML, "{ 1 -2\" />", {1, -2}, "\" />"}});
    // Lists of strings in braces are of words, and otherwise have a count, which is a claim.
    using List = Row<Strings>;
    check({List{TEXT, "{ a \"b }c } x", {"a", "\"b", "}c"}, " x"}, List{XML, "{ a }\" />", {"a"}, "\" />"},
           List{TEXT, "{ a b", {"a", "b"}, "", true}, List{TEXT, "1 \"a\" \"b\"", {"a"}, " \"b\""},
           List{TEXT, "x", {}, "x", true}, List{XML, "\" />", {}, "\" />"}});
    check<std::set<std::string>>({{TEXT, "{ b a }", {"a", "b"}, ""}});
    for (std::string const count : {"3", "18446744073709551615"}) {
        check<Strings>({{TEXT, count + " \"a\" \"b\"\n}", {"a", "b"}, "}", true},
                        {XML, count + " 'a'\" />", {"a"}, "\" />", true}});
        check<Map>({{TEXT, count + " \"a\"=>\"b\"\n}", {{"a", "b"}}, "}", true}});
    }
    EXPECT_TRUE(readFrom<Map>("2 \"a\"=>\"1\" \"b\" => \"2\"").failed());
}

TEST(DataInFormatTest, VersionsAndTimesAreRead) {
    auto const read = [](char const* text, ModelFormat::Format format) {
        auto const outcome = readFrom<VersionNum>(text, format);
        return outcome.value.name + outcome.value.getReleaseNumbers() + (outcome.failed() ? "!" : "|") +
               outcome.rest;
    };
    EXPECT_EQ(read(" \"Root\" 1.2.3.4.5\nX", TEXT), "Root1.2.3.4.5|\nX");
    EXPECT_EQ(read("<!-- 'Root' 1.2.3.4 -->\n<VOXA>", XML), "Root1.2.3.4|<VOXA>");
    EXPECT_EQ(read(" Name {", TEXT), "WtLib9.1.0.0|Name {");
    EXPECT_EQ(read("\"Root\" 1,2", TEXT), "Root1.1.0.0!,2");
    EXPECT_TRUE(readFrom<Time>("1.2.x").failed());
}

TEST(DataInFormatTest, LimitsOfAnOlderFormAreShared) {
    SVec2d<double> const a(1, 2), b(3, 4), none;
    check<StatisticValLimits<double>>(
        {{TEXT, "StatisticValLimits 1[2,3]4 Limits [1,2] [3 4] x", {{1, 2, 3, 4}, {a, a, b, b}}, " x"},
         {TEXT, "Other 1[2,3]4 Limits x", {{1, 2, 3, 4}, {none, none, none, none}}, " x"}});
}

TEST(DataInFormatTest, BufferThatThrowsMakesTheStreamBad) {
    BreakingBuffer buffer("{ 1 2");
    std::istream in(&buffer);
    EXPECT_EQ(DataInFormat<std::vector<int>>(in, TEXT).get(), std::vector<int>{1});
    EXPECT_TRUE(in.bad());
    in.clear();
    in.exceptions(std::ios_base::badbit);
    EXPECT_THROW(DataInFormat<int>(in, TEXT).get(), std::ios_base::failure);
}

TEST(DataInFormatTest, LocalesAndFlagsOfTheStreamDoNotMatter) {
    OddGlobalLocale const odd;
    std::istringstream in("1234.5 12 { 7 } \"v\" 1.2.3.4");
    in.imbue(oddLocale());
    in >> std::hex >> std::noskipws;
    EXPECT_EQ(DataInFormat<double>(in, TEXT).get(), 1234.5);
    EXPECT_EQ(DataInFormat<int>(in, TEXT).get(), 12);
    EXPECT_EQ(DataInFormat<std::vector<int>>(in, TEXT).get(), std::vector<int>{7});
    EXPECT_EQ(DataInFormat<VersionNum>(in, TEXT).get().getReleaseNumbers(), "1.2.3.4");
}

} // namespace Zorvan::AttributeContainer
