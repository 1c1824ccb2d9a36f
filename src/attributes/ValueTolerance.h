// SPDX-License-Identifier: MIT
#pragma once

#include "attributes/ValueEquality.h"

#include <AttributeContainer/ValueTypes.h>

#include <cmath>
#include <cstddef>
#include <type_traits>
#include <vector>

namespace Zorvan::AttributeContainer {

/// By what a component is multiplied before it is rounded; 0 for value types without a tolerance.
template <class T>
inline constexpr double toleranceScale = 0;
template <>
inline constexpr double toleranceScale<double> = 1e5;
template <>
inline constexpr double toleranceScale<std::vector<double>> = 1e5;
template <class C>
inline constexpr double toleranceScale<Vec3d<C>> = std::is_floating_point_v<C> ? 1e8 : 0;
template <class C>
inline constexpr double toleranceScale<Vec4d<C>> = std::is_floating_point_v<C> ? 1e8 : 0;
template <class C>
inline constexpr double toleranceScale<SVec2d<C>> = std::is_floating_point_v<C> ? 1e8 : 0;
template <>
inline constexpr double toleranceScale<Mat4d<double>> = 1e8;
template <>
inline constexpr double toleranceScale<Mat4d<float>> = 1e5;
template <>
inline constexpr double toleranceScale<std::vector<SVec2d<double>>> = 1e8;
template <>
inline constexpr double toleranceScale<std::vector<Vec4d<double>>> = 1e8;
template <>
inline constexpr double toleranceScale<std::vector<Vec3d<float>>> = 1e8;
template <>
inline constexpr double toleranceScale<std::vector<std::vector<Vec3d<double>>>> = 1e8;
template <>
inline constexpr double toleranceScale<std::vector<Mat4d<double>>> = 1e8;

/// Whether the scaled difference rounds to 0. It is not converted to an integer, which it may be too large
/// for. Equal infinities are near, so are two NaN; a NaN is near no number.
template <class Precision>
bool isDifferenceNear(Precision a, Precision b, Precision scale) {
    if (a == b)
        return true;
    if (std::isnan(a) || std::isnan(b))
        return std::isnan(a) && std::isnan(b);
    return std::fabs((a - b) * scale) < Precision(0.5);
}

template <class Precision, class T>
bool areComponentsNear(T const& a, T const& b, Precision scale) {
    if constexpr (std::is_floating_point_v<T>) {
        return isDifferenceNear<Precision>(a, b, scale);
    } else {
        if (a.size() != b.size())
            return false;
        for (std::size_t i = 0; i < a.size(); ++i)
            if (!areComponentsNear(a[i], b[i], scale))
                return false;
        return true;
    }
}

/// Whether two values are equal within the tolerance of their type; false for a type without one.
template <class T>
bool areValuesNear([[maybe_unused]] T const& a, [[maybe_unused]] T const& b) {
    if constexpr (toleranceScale<T> == 0)
        return false;
    else if constexpr (std::is_same_v<T, Mat4d<float>>)
        return areComponentsNear<float>(a, b, static_cast<float>(toleranceScale<T>));
    else
        return areComponentsNear<double>(a, b, toleranceScale<T>);
}

} // namespace Zorvan::AttributeContainer
