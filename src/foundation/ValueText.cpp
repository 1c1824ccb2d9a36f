// SPDX-License-Identifier: MIT
#include <AttributeContainer/ValueText.h>

#include "foundation/UuidText.h"

#include <charconv>
#include <cmath>
#include <cstddef>

namespace Zorvan::AttributeContainer {

namespace {

template <class T>
void appendInteger(std::string& out, T value) {
    char buffer[24];
    out.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
}

template <class T>
void appendFloating(std::string& out, T value) {
    if (std::isnan(value)) { // its sign would show
        out += "nan";
        return;
    }
    char buffer[32];
    out.append(buffer,
               std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 6).ptr);
}

template <class Vector>
void appendVector(std::string& out, Vector const& value) {
    for (auto const& component : value) {
        appendText(out, component);
        out += ' ';
    }
}

template <class Matrix>
void appendMatrix(std::string& out, Matrix const& value) {
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (i != 0)
            out += ", ";
        appendText(out, value[i]);
    }
}

template <class Collection>
void appendCollection(std::string& out, Collection const& value) {
    out += '{';
    for (typename Collection::value_type const& element : value) {
        out += ' ';
        appendText(out, element);
    }
    out += " } ";
}

} // namespace

void appendText(std::string& out, bool const& value) { out += value ? "true" : "false"; }
void appendText(std::string& out, signed char const& value) { out += static_cast<char>(value); }
void appendText(std::string& out, unsigned char const& value) { out += static_cast<char>(value); }
void appendText(std::string& out, short const& value) { appendInteger(out, value); }
void appendText(std::string& out, unsigned short const& value) { appendInteger(out, value); }
void appendText(std::string& out, int const& value) { appendInteger(out, value); }
void appendText(std::string& out, unsigned int const& value) { appendInteger(out, value); }
void appendText(std::string& out, long const& value) { appendInteger(out, value); }
void appendText(std::string& out, unsigned long const& value) { appendInteger(out, value); }
void appendText(std::string& out, long long const& value) { appendInteger(out, value); }
void appendText(std::string& out, unsigned long long const& value) { appendInteger(out, value); }
void appendText(std::string& out, float const& value) { appendFloating(out, value); }
void appendText(std::string& out, double const& value) { appendFloating(out, value); }
void appendText(std::string& out, std::string const& value) { out += value; }
void appendText(std::string& out, Vec3d<float> const& value) { appendVector(out, value); }
void appendText(std::string& out, Vec3d<double> const& value) { appendVector(out, value); }
void appendText(std::string& out, Vec4d<float> const& value) { appendVector(out, value); }
void appendText(std::string& out, Vec4d<double> const& value) { appendVector(out, value); }
void appendText(std::string& out, SVec2d<int> const& value) { appendVector(out, value); }
void appendText(std::string& out, SVec2d<unsigned int> const& value) { appendVector(out, value); }
void appendText(std::string& out, SVec2d<unsigned short> const& value) { appendVector(out, value); }
void appendText(std::string& out, SVec2d<float> const& value) { appendVector(out, value); }
void appendText(std::string& out, SVec2d<double> const& value) { appendVector(out, value); }
void appendText(std::string& out, SVec3d<unsigned short> const& value) { appendVector(out, value); }
void appendText(std::string& out, SVec3d<unsigned int> const& value) { appendVector(out, value); }
void appendText(std::string& out, Mat4d<float> const& value) { appendMatrix(out, value); }
void appendText(std::string& out, Mat4d<double> const& value) { appendMatrix(out, value); }
void appendText(std::string& out, uuids::uuid const& value) {
    out.resize(out.size() + uuids::uuidTextSize);
    uuids::putUuidText(out.data() + out.size() - uuids::uuidTextSize, value);
}
void appendText(std::string& out, ScanPtColor<Vec3d<float>> const& value) {
    appendVector(out, value.getPoint());
    for (std::size_t i = 0; i < value.getColor().size(); ++i) {
        if (i != 0)
            out += ' ';
        appendInteger(out, value.getColor()[i]);
    }
}
void appendText(std::string& out, std::vector<bool> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<signed char> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<unsigned char> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<short> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<unsigned short> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<int> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<unsigned int> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<std::int64_t> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<std::uint64_t> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<double> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<std::string> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<Vec3d<float>> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<Vec3d<double>> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<Vec4d<double>> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<std::vector<Vec3d<double>>> const& value) {
    appendCollection(out, value);
}
void appendText(std::string& out, std::vector<SVec2d<int>> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<SVec2d<unsigned short>> const& value) {
    appendCollection(out, value);
}
void appendText(std::string& out, std::vector<SVec2d<float>> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<SVec2d<double>> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<SVec3d<unsigned int>> const& value) {
    appendCollection(out, value);
}
void appendText(std::string& out, std::vector<Mat4d<double>> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<uuids::uuid> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::vector<ScanPtColor<Vec3d<float>>> const& value) {
    appendCollection(out, value);
}
void appendText(std::string& out, std::set<std::string> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::set<uuids::uuid> const& value) { appendCollection(out, value); }
void appendText(std::string& out, std::map<std::string, std::string> const& value) {
    out += '{';
    for (auto const& [key, text] : value) {
        out += " \"";
        out += key;
        out += "\"=>\"";
        out += text;
        out += '"';
    }
    out += " } ";
}

} // namespace Zorvan::AttributeContainer
