// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>
#include <AttributeContainer/Uuid.h>
#include <AttributeContainer/ValueTypes.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer {

/// `appendText` appends the text that shows a value to users, one overload for each value type. It is not the
/// form of the model format: floating-point numbers have six significant digits, 8-bit integers are
/// characters, strings stand without quotes. The locale plays no part. May throw `std::bad_alloc`; `out` then
/// ends with a part of the text.
///
///     std::string text;
///     appendText(text, Vec3d<double>(0.5, 1, 1e-7)); // "0.5 1 1e-07 "
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, bool const& value);
/// An 8-bit integer is one character, the byte itself.
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, signed char const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, unsigned char const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, short const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, unsigned short const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, int const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, unsigned int const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, long const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, unsigned long const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, long long const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, unsigned long long const& value);
/// Every NaN is "nan".
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, float const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, double const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::string const& value);
/// A pointer, a string literal among them, would otherwise be taken for a `bool`.
void appendText(std::string& out, void const* value) = delete;

/// Vectors: a blank after each component.
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, Vec3d<float> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, Vec3d<double> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, Vec4d<float> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, Vec4d<double> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, SVec2d<int> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, SVec2d<unsigned int> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, SVec2d<unsigned short> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, SVec2d<float> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, SVec2d<double> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, SVec3d<unsigned short> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, SVec3d<unsigned int> const& value);
/// Matrices: ", " between the components.
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, Mat4d<float> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, Mat4d<double> const& value);
/// The canonical text, 8-4-4-4-12 lower-case digits.
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, uuids::uuid const& value);
/// The point and the colour components as numbers, a blank between them.
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, ScanPtColor<Vec3d<float>> const& value);

/// Collections: the elements in braces, a blank before each of them, before the closing brace and behind it.
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<bool> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<signed char> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<unsigned char> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<short> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<unsigned short> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<int> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<unsigned int> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<std::int64_t> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<std::uint64_t> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<double> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<std::string> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<Vec3d<float>> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<Vec3d<double>> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<Vec4d<double>> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out,
                                          std::vector<std::vector<Vec3d<double>>> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<SVec2d<int>> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<SVec2d<unsigned short>> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<SVec2d<float>> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<SVec2d<double>> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<SVec3d<unsigned int>> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<Mat4d<double>> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::vector<uuids::uuid> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out,
                                          std::vector<ScanPtColor<Vec3d<float>>> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::set<std::string> const& value);
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::set<uuids::uuid> const& value);
/// Entries in key order, as "key"=>"value".
KX_ATTRIBUTECONTAINER_API void appendText(std::string& out, std::map<std::string, std::string> const& value);

} // namespace Zorvan::AttributeContainer
