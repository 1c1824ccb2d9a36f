// SPDX-License-Identifier: MIT
// The forms of values, as tests/data/serialization/values-*.txt hold them.
#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/DataOutFormat.h>
#include <AttributeContainer/ValueText.h>

#include "DataFile.h"
#include "ReaderFixture.h"

namespace Zorvan::AttributeContainer {

namespace {

template <class T>
std::string written(T const& value, ModelFormat::Format format = ModelFormat::Text) {
    std::ostringstream out;
    DataOutFormat<T>(out, format).put(value);
    return out.str();
}

template <class T>
std::string shown(T const& value) {
    std::string text;
    if constexpr (sizeof(T) > 1 && requires { appendText(text, value); })
        appendText(text, value);
    else
        text = written(value);
    return text;
}

template <class T>
void expectRead(DataRow const& row) {
    std::istringstream in(row[2]);
    DataInFormat<T> reader(in, formatOf(row[1]));
    std::string const value = shown(reader.get());
    EXPECT_EQ(row[5] == "fails", (in.rdstate() & std::ios_base::failbit) != 0) << row.place;
    if (row[3] != "?") {
        EXPECT_EQ(row[3], value) << row.place;
        EXPECT_EQ(row[4], restOf(in)) << row.place;
    }
}

template <class T>
bool areSame(T const& a, T const& b) {
    if constexpr (requires { a == b; })
        return a == b;
    else
        return written(a) == written(b);
}

/// As it stands in a document, where something follows it.
template <class T>
void expectReadBack(T const& value, ModelFormat::Format format, std::string const& end) {
    std::istringstream in(written(value, format) + end);
    EXPECT_TRUE(areSame(DataInFormat<T>(in, format).take(), value) && in.good()) << in.str();
    in >> std::ws;
    EXPECT_EQ(end.substr(end.find_first_not_of('\n')), restOf(in)) << in.str();
}

template <class T>
void expectWritten(DataRow const& row) {
    std::istringstream in(row[1]);
    T const value = DataInFormat<T>(in, ModelFormat::Text).take();
    EXPECT_FALSE(in.fail()) << row.place;
    if (row[2] == "?") {
        SCOPED_TRACE(row.place);
        expectReadBack(value, ModelFormat::Text, "\n}");
        expectReadBack(value, ModelFormat::XmlV2, "\" />\n");
        return;
    }
    for (auto const& [format, column] : {std::pair(ModelFormat::Text, 2U),
                                         {static_cast<ModelFormat::Format>(7), 2U},
                                         {ModelFormat::Xml, 3U},
                                         {ModelFormat::XmlV2, 4U}})
        EXPECT_EQ(row[column < row.columns.size() ? column : 2], written(value, format)) << row.place;
}

using Check = void (*)(DataRow const&);

template <class T>
constexpr std::pair<Check, Check> checks{expectRead<T>, expectWritten<T>};

using Checks = std::map<std::string, std::pair<Check, Check>>;

template <class... T>
Checks checksOf(std::string const& names) {
    Checks all;
    std::istringstream in(names);
    auto const add = [&](std::pair<Check, Check> const& both) {
        std::string name;
        in >> name;
        all[name] = both;
    };
    (add(checks<T>), ...);
    return all;
}

/// How each type is checked: as it is read, and as it is written.
Checks allChecks() {
    using Point = ScanPtColor<Vec3d<float>>;
    return checksOf<bool, std::vector<bool>, signed char, std::vector<signed char>, double, SVec2d<double>,
                    Vec3d<double>, std::vector<double>, float, Vec4d<float>, SVec2d<int>,
                    std::vector<SVec2d<int>>, SVec3d<int>, std::int64_t, std::vector<int>,
                    StatisticValLimits<double>, std::map<std::string, std::string>, Mat4d<float>, Point,
                    std::vector<Point>, std::vector<std::vector<Vec3d<double>>>, StatisticVal<double>,
                    std::string, std::vector<std::string>, std::set<std::string>, Time, unsigned char,
                    Vec4d<unsigned char>, std::vector<unsigned char>, SVec2d<unsigned int>,
                    SVec3d<unsigned int>, std::vector<SVec3d<unsigned int>>, std::uint64_t,
                    std::set<std::uint64_t>, SVec2d<unsigned short>, std::vector<SVec2d<unsigned short>>,
                    SVec3d<unsigned short>, uuids::uuid, VersionNum>(
        "bool bools char chars double double2 double3 doubles float float4 int2 int2s int3 int64 ints limits "
        "map matrix point points polygons statistic string strings stringset time uchar uchar4 uchars uint2 "
        "uint3 uint3s uint64 uint64set ushort2 ushort2s ushort3 uuid version");
}

} // namespace

TEST(ValueFiles, TextsAreReadAsFarAsTheyGo) {
    auto const checks = allChecks();
    for (auto const& row : dataRows("serialization/values-read.txt"))
        checks.at(row[0]).first(row);
}

TEST(ValueFiles, ValuesHaveTheirForm) {
    auto const checks = allChecks();
    for (auto const& row : dataRows("serialization/values-written.txt"))
        checks.at(row[0]).second(row);
}

} // namespace Zorvan::AttributeContainer
