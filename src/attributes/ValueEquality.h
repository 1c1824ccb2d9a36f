// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ValueTypes.h>

#include <cmath>
#include <cstddef>
#include <type_traits>
#include <vector>

namespace Zorvan::AttributeContainer {

template <class T>
struct IsComponents : std::false_type {};
template <class T>
struct IsComponents<Vec3d<T>> : std::true_type {};
template <class T>
struct IsComponents<Vec4d<T>> : std::true_type {};
template <class T>
struct IsComponents<SVec2d<T>> : std::true_type {};
template <class T>
struct IsComponents<SVec3d<T>> : std::true_type {};
template <class T>
struct IsComponents<Mat4d<T>> : std::true_type {};

/// The equality of attribute values. Floating-point numbers are equal when neither is less than the other, so
/// that a NaN equals every number; everything else is compared by `==`, collections element by element.
template <class T>
bool areValuesEqual(T const& a, T const& b) {
    if constexpr (std::is_floating_point_v<T>) {
        return !(a < b) && !(b < a);
    } else if constexpr (IsComponents<T>::value) {
        for (std::size_t i = 0; i < T::size(); ++i)
            if (!areValuesEqual(a[i], b[i]))
                return false;
        return true;
    } else {
        return a == b;
    }
}

inline bool areValuesEqual(ScanPtColor<Vec3d<float>> const& a, ScanPtColor<Vec3d<float>> const& b) {
    return areValuesEqual(a.getPoint(), b.getPoint()) && a.getColor() == b.getColor();
}

template <class T>
bool areValuesEqual(std::vector<T> const& a, std::vector<T> const& b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (!areValuesEqual(a[i], b[i]))
            return false;
    return true;
}

/// Whether a value would be written as the initial value of its type: a component that is not finite counts
/// as the 0 that is printed for it.
template <class T>
bool isInitialValue(T const& value) {
    if constexpr (std::is_floating_point_v<T>) {
        return value == 0 || !std::isfinite(value);
    } else if constexpr (IsComponents<T>::value) {
        for (std::size_t i = 0; i < T::size(); ++i)
            if (!isInitialValue(value[i]))
                return false;
        return true;
    } else if constexpr (std::is_same_v<T, ScanPtColor<Vec3d<float>>>) {
        return isInitialValue(value.getPoint()) && value.getColor() == typename T::Color();
    } else {
        return areValuesEqual(value, T());
    }
}

} // namespace Zorvan::AttributeContainer
