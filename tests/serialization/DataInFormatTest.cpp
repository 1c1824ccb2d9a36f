// SPDX-License-Identifier: MIT
#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/DataOutFormat.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace Zorvan::AttributeContainer {

namespace {

constexpr auto TEXT = ModelFormat::Text;
constexpr auto XML = ModelFormat::XmlV2;

using Point = ScanPtColor<Vec3d<float>>;

constexpr auto MOST = std::numeric_limits<std::uint64_t>::max();
constexpr auto LEAST = std::numeric_limits<std::int64_t>::min();
constexpr uuids::uuid id({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0xFE});
std::string const awkward = "q\" b\\ a' {}<>&amp;\n\r\t\xC3\xA4 \\n \\u00FF\\";

/// The state and the rest of a stream behind a value.
template <class T>
struct Outcome {
    T value;
    std::ios_base::iostate state;
    std::string rest;
};

template <class T>
Outcome<T> finish(T value, std::istream& in) {
    Outcome<T> outcome{std::move(value), in.rdstate(), {}};
    in.clear();
    std::getline(in, outcome.rest, '\0');
    return outcome;
}

template <class T>
Outcome<T> readFrom(std::string const& text, ModelFormat::Format format = TEXT) {
    std::istringstream in(text);
    DataInFormat<T> reader(in, format);
    T value = reader.get();
    return finish(std::move(value), in);
}

template <class T>
bool failed(Outcome<T> const& outcome) {
    return (outcome.state & std::ios_base::failbit) != 0;
}

/// Writes and reads `values` in both renderings that have a reader, each followed by what follows it in a
/// document.
template <class T>
void expectReadBack(std::initializer_list<T> values) {
    for (auto const& [format, end] : {std::pair{TEXT, "\n}"}, std::pair{XML, "\" />\n"}}) {
        for (T const& value : values) {
            std::stringstream stream;
            DataOutFormat<T>(stream, format).put(value);
            std::string const text = stream.str();
            stream << end;
            EXPECT_TRUE(DataInFormat<T>(stream, format).take() == value) << text;
            EXPECT_TRUE(stream.good()) << text;
            std::string rest;
            std::getline(stream >> std::ws, rest, '\0');
            EXPECT_EQ(rest, std::string(end).substr(format == TEXT ? 1 : 0)) << text;
        }
    }
}

template <class T>
Outcome<T> byStream(std::string const& text) {
    std::istringstream in(text);
    T value{};
    in >> value;
    return finish(value, in);
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
void compareWithStream(bool rangeFails) {
    std::istringstream numbers(NUMBERS);
    for (std::string text; std::getline(numbers, text, '|');) {
        auto const ours = readFrom<T>(text);
        auto const standard = byStream<T>(text);
        EXPECT_EQ(ours.value, standard.value) << text;
        EXPECT_EQ(std::signbit(static_cast<double>(ours.value)),
                  std::signbit(static_cast<double>(standard.value)))
            << text;
        EXPECT_EQ(ours.rest, standard.rest) << text;
        // A floating-point number beyond the range is no failure here.
        bool const outOfRange = !rangeFails && std::abs(static_cast<double>(standard.value)) >=
                                                   static_cast<double>(std::numeric_limits<T>::max());
        EXPECT_EQ(ours.state, outOfRange ? standard.state & ~std::ios_base::failbit : standard.state) << text;
    }
}

class OddNumbers : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\2"; }
};

/// Throws where its text ends.
class BreakingBuffer : public std::streambuf {
public:
    explicit BreakingBuffer(std::string text) : text_(std::move(text)) {
        setg(text_.data(), text_.data(), text_.data() + text_.size());
    }

protected:
    int_type underflow() override { throw 1; }

private:
    std::string text_;
};

} // namespace

TEST(DataInFormatTest, NumbersAreReadAsTheStreamOperatorReadsThem) {
    compareWithStream<short>(true);
    compareWithStream<unsigned short>(true);
    compareWithStream<int>(true);
    compareWithStream<unsigned int>(true);
    compareWithStream<std::int64_t>(true);
    compareWithStream<std::uint64_t>(true);
    compareWithStream<float>(false);
    compareWithStream<double>(false);
}

TEST(DataInFormatTest, EverySingleValueIsReadBack) {
    expectReadBack<bool>({true, false});
    expectReadBack<signed char>({-128, 0, 127});
    expectReadBack<unsigned char>({0, 255});
    expectReadBack<short>({-32768, 32767});
    expectReadBack<unsigned short>({0, 65535});
    expectReadBack<int>({-5, 5});
    expectReadBack<unsigned int>({4294967295U});
    expectReadBack<std::int64_t>({LEAST});
    expectReadBack<std::uint64_t>({MOST});
    expectReadBack<float>({0.5F, -1e30F, 123.5F, 1e-30F});
    expectReadBack<double>({0.1, -1e300, 123.456, 1e-300, 1234567.891, 1e23});
    expectReadBack<std::string>({"", "abc", awkward, std::string("\0x", 2)});
    expectReadBack<uuids::uuid>({id, uuids::uuid()});
    expectReadBack<SVec2d<unsigned short>>({{1, 2}});
    expectReadBack<SVec2d<int>>({{-1, -1}});
    expectReadBack<SVec2d<unsigned int>>({{1, 2}});
    expectReadBack<SVec2d<float>>({{0.5F, 1000}});
    expectReadBack<SVec2d<double>>({{0.5, 1000}});
    expectReadBack<SVec3d<unsigned short>>({{1, 2, 3}});
    expectReadBack<SVec3d<int>>({{1, -2, 3}});
    expectReadBack<SVec3d<unsigned int>>({{1, 2, 3}});
    expectReadBack<Vec3d<float>>({{1, 2, 0.5F}});
    expectReadBack<Vec3d<double>>({{1, 2, 1e-7}});
    expectReadBack<Vec4d<float>>({{1, 2, 3, 0.25F}});
    expectReadBack<Vec4d<double>>({{1, 2, 3, 1e20}});
    expectReadBack<Vec4d<unsigned char>>({{'a', '"', 0xFF, 0}});
    expectReadBack<Mat4d<float>>({{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0.5F}});
    expectReadBack<Mat4d<double>>({{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0.5}});
    expectReadBack<Point>({Point({1.5F, 2, -3}, {0, 1, 128, 255})});
    expectReadBack<StatisticVal<double>>({{{1, 2.5, -3, 4}}});
    StatisticValLimits<double> limits{{1, 2, 3, 4.5}, {}};
    limits.limits = {SVec2d<double>(1, 2), SVec2d<double>(3, 4), SVec2d<double>(5, 6), SVec2d<double>(7, 8)};
    expectReadBack<StatisticValLimits<double>>({limits});
    expectReadBack<Time>({Time(2021, 12, 31, 23, 59, 58)});
}

TEST(DataInFormatTest, EveryCollectionIsReadBack) {
    expectReadBack<std::map<std::string, std::string>>({{}, {{"", awkward}, {awkward, ""}}});
    expectReadBack<std::set<std::string>>({{}, {"a", awkward}});
    expectReadBack<std::set<unsigned int>>({{}, {3, 4}});
    expectReadBack<std::set<std::uint64_t>>({{3, MOST}});
    expectReadBack<std::set<uuids::uuid>>({{}, {id, uuids::uuid()}});
    expectReadBack<std::vector<std::string>>({{}, {"{", awkward, ""}});
    expectReadBack<std::vector<bool>>({{}, {true, false}});
    expectReadBack<std::vector<signed char>>({{}, {-1, 65}});
    expectReadBack<std::vector<unsigned char>>({{200, 65}});
    expectReadBack<std::vector<short>>({{-1, 65}});
    expectReadBack<std::vector<unsigned short>>({{1, 65}});
    expectReadBack<std::vector<int>>({{}, {1, 2, 3}});
    expectReadBack<std::vector<unsigned int>>({{1, 2, 3}});
    expectReadBack<std::vector<std::int64_t>>({{LEAST, 2}});
    expectReadBack<std::vector<std::uint64_t>>({{MOST, 2}});
    expectReadBack<std::vector<double>>({{0.5, 1e300}});
    expectReadBack<std::vector<uuids::uuid>>({{}, {id, id}});
    expectReadBack<std::vector<SVec2d<unsigned short>>>({{{1, 2}, {3, 4}}});
    expectReadBack<std::vector<SVec2d<int>>>({{{1, 2}, {3, 4}}});
    expectReadBack<std::vector<SVec2d<float>>>({{{1, 2}, {3, 4}}});
    expectReadBack<std::vector<SVec2d<double>>>({{{1, 2}, {3, 4}}});
    expectReadBack<std::vector<SVec3d<unsigned int>>>({{{1, 2, 3}, {3, 4, 5}}});
    expectReadBack<std::vector<Vec3d<float>>>({{{1, 2, 3}, {3, 4, 5}}});
    expectReadBack<std::vector<Vec3d<double>>>({{{1, 2, 3}, {3, 4, 5}}});
    expectReadBack<std::vector<Vec4d<double>>>({{{1, 2, 3, 4}, {3, 4, 5, 6}}});
    expectReadBack<std::vector<Mat4d<double>>>({{}, {Mat4d<double>(), Mat4d<double>()}});
    expectReadBack<std::vector<Point>>({{Point({1.5F, 2, -3}, {0, 1, 128, 255}), Point()}});
    expectReadBack<std::vector<std::vector<Vec3d<double>>>>({{}, {{{1, 2, 3}}, {}, {{4, 5, 6}, {7, 8, 9}}}});
}

TEST(DataInFormatTest, StringsFollowTheRulesOfTheirRendering) {
    struct Row {
        ModelFormat::Format format;
        std::string document, value, rest;
        bool fails;
    };
    Row const rows[] = {
        {TEXT, R"( "a\"b\\" x)", "a\"b\\", " x", false},
        {TEXT, R"("a\nb\rc\u00e4\uFFC3")", "a\nb\rc\xE4\xC3", "", false},
        {TEXT, R"("a\\\"b" x)", "a\\\"b", " x", false},
        {TEXT, R"("a\tb\n")", R"(a\tb\n)", "", false},       // an unknown escape: as it is
        {TEXT, R"("a\n\u12G4")", R"(a\n\u12G4)", "", false}, // not four digits: as it is
        {TEXT, R"("\u123")", R"(\u123)", "", false},
        {TEXT, "abc", "", "abc", false},
        {TEXT, "'abc'", "", "'abc'", false},
        {TEXT, "\"cut", "cut", "", true},
        {TEXT, R"("cut\)", R"(cut\)", "", true},
        {TEXT, "", "", "", true},
        {TEXT, "\"&lt;\"", "&lt;", "", false},
        {ModelFormat::Xml, "\"&lt;'\"", "&lt;'", "", false},
        {XML, "'&lt;&gt;&quot;&apos;&amp;&foo;&'\" />", "<>\"'&&foo;&", "\" />", false},
        {XML, "'&amp;lt;&amp;amp;&amp;#1;'", "&lt;&amp;&#1;", "", false},
        {XML, R"('a\&quot;b\n"')", "a\"b\n\"", "", false},
        {XML, R"('a\'b)", "a\\", "b", false},
        {XML, "\"abc\"", "", "\"abc\"", false},
        {XML, "<Name x='q' />", "Name", "'q' />", false},
        {XML, "'cut", "cut", "", true},
        {XML, "<Name x", "Name", "", true},
    };
    for (Row const& row : rows) {
        auto const outcome = readFrom<std::string>(row.document, row.format);
        EXPECT_EQ(outcome.value, row.value) << row.document;
        EXPECT_EQ(outcome.rest, row.rest) << row.document;
        EXPECT_EQ(failed(outcome), row.fails) << row.document;
    }
}

TEST(DataInFormatTest, WordsEndWhereTheirRenderingSaysSo) {
    EXPECT_TRUE(readFrom<bool>(" TrUe x").value);
    EXPECT_TRUE(readFrom<bool>("true").value);
    EXPECT_FALSE(failed(readFrom<bool>("true")));
    EXPECT_FALSE(readFrom<bool>("truex").value);
    EXPECT_TRUE(readFrom<bool>(R"("tr\ue")").value) << "a token may be quoted";
    EXPECT_EQ(readFrom<bool>("True\" />", XML).rest, "\" />");
    EXPECT_TRUE(readFrom<bool>("True\" />", XML).value);
    EXPECT_TRUE(failed(readFrom<bool>("")));

    EXPECT_EQ(readFrom<signed char>("-7 x").value, -7);
    EXPECT_EQ(readFrom<unsigned char>("200\" />", XML).rest, "\" />");
    struct Row {
        char const* text;
        int value;
    };
    for (Row const& row : {Row{"128", 127}, Row{"-129", -128}, Row{"1.5", 1}, Row{"A", 0}, Row{"", 0},
                           Row{"99999999999999999999", 127}}) {
        EXPECT_EQ(readFrom<signed char>(row.text).value, row.value) << row.text;
        EXPECT_TRUE(failed(readFrom<signed char>(row.text))) << row.text;
    }

    uuids::uuid const upper({0xAB, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
    EXPECT_EQ(readFrom<uuids::uuid>("{AB01-02030405-0607-0809-0A0B0C0D0E0F} x").value, upper);
    EXPECT_TRUE(failed(readFrom<uuids::uuid>("ab010203")));
    EXPECT_EQ(readFrom<uuids::uuid>("ab010203").value, uuids::uuid());
}

TEST(DataInFormatTest, InfinityMarksFollowAOne) {
    EXPECT_EQ(readFrom<double>("1.#INF 5").value, std::numeric_limits<double>::infinity());
    EXPECT_EQ(readFrom<float>("-1.#inf").value, -std::numeric_limits<float>::infinity());
    EXPECT_EQ(readFrom<double>("1.#INF 5").rest, " 5");
    for (char const* const text : {"1.#IND", "1.#IN", "1.#"}) {
        auto const outcome = readFrom<double>(text);
        EXPECT_EQ(outcome.value, 1);
        EXPECT_EQ(outcome.rest, std::string(text).substr(2));
        EXPECT_FALSE(failed(outcome)) << text;
    }
    EXPECT_EQ(readFrom<double>("2.#INF").rest, "#INF");
    errno = 5;
    EXPECT_FALSE(failed(readFrom<Vec3d<double>>("1e999 -1e999 1e-999")));
    EXPECT_EQ(errno, 5);
}

TEST(DataInFormatTest, PartsOfScanPointsStayInTheirRange) {
    constexpr float LARGEST = std::numeric_limits<float>::max();
    auto const far = readFrom<Point>("1e300 -1e300 1.#INF 0 1 2 255");
    EXPECT_EQ(far.value.getPoint(), Vec3d<float>(LARGEST, -LARGEST, std::numeric_limits<float>::infinity()));
    EXPECT_FALSE(failed(far));
    auto const bright = readFrom<Point>("0 0 0 7 256 2 255");
    EXPECT_EQ(bright.value.getColor(), (Point::Color{7, 255, 0, 0})) << "nothing is read after a failure";
    EXPECT_TRUE(failed(bright));
}

TEST(DataInFormatTest, CollectionsEndAtABraceAtTheirAttributeOrAtAFailure) {
    using Ints = std::vector<int>;
    struct Row {
        ModelFormat::Format format;
        char const* document;
        Ints value;
        char const* rest;
        bool fails;
    };
    for (Row const& row :
         {Row{TEXT, " { 1 2 3 } x", {1, 2, 3}, " x", false}, Row{TEXT, "{1 2}", {1, 2}, "", false},
          Row{TEXT, "[ 1 }", {1}, "", false}, Row{TEXT, "{ }", {}, "", false}, Row{TEXT, "{}", {}, "", false},
          Row{TEXT, "{ 1 2", {1, 2}, "", true}, Row{TEXT, "{ 1 x 2 }", {1}, "x 2 }", true},
          Row{TEXT, "{ 1 99999999999 2 }", {1}, " 2 }", true}, Row{TEXT, "", {}, "", true},
          Row{XML, "{ 1 2 } \" />", {1, 2}, " \" />", false}, Row{XML, "{ 1 2\" />", {1, 2}, "\" />", false},
          Row{XML, "\" />", {}, "\" />", false}}) {
        auto const outcome = readFrom<Ints>(row.document, row.format);
        EXPECT_EQ(outcome.value, row.value) << row.document;
        EXPECT_EQ(outcome.rest, row.rest) << row.document;
        EXPECT_EQ(failed(outcome), row.fails) << row.document;
    }
    EXPECT_TRUE(failed(readFrom<std::vector<bool>>("{ true")));
    EXPECT_EQ(readFrom<std::vector<bool>>("{ true false\" />", XML).value, (std::vector<bool>{true, false}));
    EXPECT_EQ(readFrom<std::vector<signed char>>("{ 1 -2\" />", XML).value,
              (std::vector<signed char>{1, -2}));
}

TEST(DataInFormatTest, CountsAreClaims) {
    using Strings = std::vector<std::string>;
    for (std::string const count : {"3", "18446744073709551615"}) {
        auto const list = readFrom<Strings>(count + " \"a\" \"b\"\n}");
        EXPECT_EQ(list.value, (Strings{"a", "b"}));
        EXPECT_TRUE(failed(list));
        EXPECT_TRUE(failed(readFrom<Strings>(count + " 'a'\" />", XML)));
        EXPECT_TRUE(failed(readFrom<std::map<std::string, std::string>>(count + " \"a\"=>\"b\"\n}")));
    }
    EXPECT_EQ(readFrom<Strings>("1 \"a\" \"b\"").rest, " \"b\"");
    EXPECT_TRUE(failed(readFrom<Strings>("x")));
    EXPECT_FALSE(failed(readFrom<Strings>("\" />", XML)));
    auto const broken = readFrom<std::map<std::string, std::string>>("2 \"a\"=>\"1\" \"b\" => \"2\"");
    EXPECT_EQ(broken.value.size(), 1U);
    EXPECT_TRUE(failed(broken));
}

TEST(DataInFormatTest, BracedStringListsAreWords) {
    using Strings = std::vector<std::string>;
    EXPECT_EQ(readFrom<Strings>("{ a \"b }c } x").value, (Strings{"a", "\"b", "}c"}));
    EXPECT_EQ(readFrom<Strings>("{ a \"b }c } x").rest, " x");
    EXPECT_EQ(readFrom<Strings>("{ a }\" />", XML).rest, "\" />");
    EXPECT_EQ(readFrom<std::set<std::string>>("{ b a }").value, (std::set<std::string>{"a", "b"}));
    EXPECT_TRUE(failed(readFrom<Strings>("{ a b")));
}

TEST(DataInFormatTest, VersionsAndTimesAreRead) {
    auto const text = readFrom<VersionNum>(" \"Root\" 1.2.3.4.5\nX");
    EXPECT_EQ(text.value.name, "Root");
    EXPECT_EQ(text.value.getReleaseNumbers(), "1.2.3.4.5");
    EXPECT_EQ(text.rest, "\nX");
    auto const xml = readFrom<VersionNum>("<!-- 'Root' 1.2.3.4 -->\n<VOXA>", XML);
    EXPECT_EQ(xml.value.name, "Root");
    EXPECT_EQ(xml.value.getReleaseNumbers(), "1.2.3.4");
    EXPECT_EQ(xml.rest, "<VOXA>");
    auto const none = readFrom<VersionNum>(" Name {");
    EXPECT_EQ(none.value.name, VersionNum().name);
    EXPECT_EQ(none.rest, "Name {");
    EXPECT_FALSE(failed(none));
    EXPECT_TRUE(failed(readFrom<VersionNum>("\"Root\" 1,2")));
    EXPECT_TRUE(failed(readFrom<Time>("1.2.x")));
}

TEST(DataInFormatTest, LimitsOfAnOlderFormAreShared) {
    auto const old = readFrom<StatisticValLimits<double>>("StatisticValLimits 1[2,3]4 Limits [1,2] [3 4] x");
    EXPECT_EQ(old.value.limits[1], SVec2d<double>(1, 2));
    EXPECT_EQ(old.value.limits[0], SVec2d<double>(1, 2));
    EXPECT_EQ(old.value.limits[2], SVec2d<double>(3, 4));
    EXPECT_EQ(old.value.limits[3], SVec2d<double>(3, 4));
    EXPECT_EQ(old.rest, " x");
    auto const other = readFrom<StatisticValLimits<double>>("Other 1[2,3]4 Limits x");
    EXPECT_EQ(other.value.values[3], 4);
    EXPECT_EQ(other.value.limits[0], SVec2d<double>());
    EXPECT_EQ(other.rest, " x");
}

TEST(DataInFormatTest, BufferThatThrowsMakesTheStreamBad) {
    BreakingBuffer buffer("{ 1 2");
    std::istream in(&buffer);
    EXPECT_EQ(DataInFormat<std::vector<int>>(in, TEXT).get(), std::vector<int>{1});
    EXPECT_TRUE(in.bad());
    BreakingBuffer other("5");
    std::istream strict(&other);
    strict.exceptions(std::ios_base::badbit);
    EXPECT_THROW(DataInFormat<int>(strict, TEXT).get(), std::ios_base::failure);
}

TEST(DataInFormatTest, LocalesAndFlagsOfTheStreamDoNotMatter) {
    std::locale const odd(std::locale::classic(), new OddNumbers);
    std::locale const before = std::locale::global(odd);
    std::istringstream in("1234.5 12 { 7 } \"v\" 1.2.3.4");
    in.imbue(odd);
    in >> std::hex >> std::noskipws;
    EXPECT_EQ(DataInFormat<double>(in, TEXT).get(), 1234.5);
    EXPECT_EQ(DataInFormat<int>(in, TEXT).get(), 12);
    EXPECT_EQ(DataInFormat<std::vector<int>>(in, TEXT).get(), std::vector<int>{7});
    EXPECT_EQ(DataInFormat<VersionNum>(in, TEXT).get().getReleaseNumbers(), "1.2.3.4");
    std::locale::global(before);
}

} // namespace Zorvan::AttributeContainer
