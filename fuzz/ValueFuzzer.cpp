// SPDX-License-Identifier: MIT
// The values of all types: what is read well is written and reads back as the same text.
#include "Fuzzing.h"

#include <AttributeContainer/DataInFormat.h>
#include <AttributeContainer/DataOutFormat.h>
#include <AttributeContainer/ValueText.h>

#include <set>
#include <sstream>
#include <tuple>
#include <type_traits>
#include <utility>

using namespace Zorvan;
using namespace Zorvan::AttributeContainer;
using fuzzing::require;

namespace {

using Types =
    std::tuple<bool, signed char, unsigned char, short, unsigned short, int, unsigned int, std::int64_t,
               std::uint64_t, float, double, std::string, uuids::uuid, Time, VersionNum, Vec3d<double>,
               Vec3d<float>, Vec4d<double>, SVec2d<double>, SVec2d<int>, SVec3d<unsigned short>,
               Mat4d<double>, Mat4d<float>, ScanPtColor<Vec3d<float>>, std::vector<std::string>,
               std::set<std::string>, std::map<std::string, std::string>, std::vector<double>,
               std::vector<int>, std::vector<signed char>, std::vector<unsigned char>, std::vector<bool>,
               std::vector<std::uint64_t>, std::vector<Vec3d<double>>,
               std::vector<std::vector<Vec3d<double>>>, std::vector<SVec2d<int>>, std::vector<Mat4d<double>>,
               std::set<uuids::uuid>, std::vector<uuids::uuid>>;

template <class T>
std::string written(T const& value, ModelFormat::Format format) {
    std::ostringstream out;
    DataOutFormat<T>(out, format).put(value);
    return out.str();
}

template <class T>
void readAndWrite(std::string_view text, ModelFormat::Format format) {
    if (std::is_same_v<T, VersionNum> && format != ModelFormat::Text)
        return; // read as a comment of the header only
    std::istringstream in{std::string(text)};
    T const value = DataInFormat<T>(in, format).get();
    // Only times of some years can be made of a calendar's fields, but their fields may overflow beyond
    // those.
    if (in.fail() || std::is_same_v<T, Time>)
        return;
    std::string const first = written(value, format);
    // In a document something always follows a value.
    std::istringstream again(first + (format == ModelFormat::Text ? "\n}" : "\" />"));
    T const back = DataInFormat<T>(again, format).get();
    require(!again.fail(), "what was written reads back", text, first);
    std::string const second = written(back, format);
    require(first == second, "the value is the same", first, second);
}

template <std::size_t... I>
void ofType(std::size_t type, std::string_view text, ModelFormat::Format format, std::index_sequence<I...>) {
    ((I == type ? readAndWrite<std::tuple_element_t<I, Types>>(text, format) : void()), ...);
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    fuzzing::Input input(data, size);
    constexpr std::size_t numTypes = std::tuple_size_v<Types>;
    std::size_t const type = input.below(numTypes);
    ModelFormat::Format const format = input.byte() % 2 == 0 ? ModelFormat::Text : ModelFormat::XmlV2;
    ofType(type, input.rest(), format, std::make_index_sequence<numTypes>());
    return 0;
}
