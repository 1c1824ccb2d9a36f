// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>

namespace Zorvan {

/// What the geometric values have in common: `N` components of type `T` in the order given and nothing else.
/// They are zero after default construction, copied by value, and equal when all components are equal. `Self`
/// keeps types of the same shape apart.
template <class Self, class T, std::size_t N>
class Components {
public:
    using value_type = T;

    constexpr Components() = default;
    explicit constexpr Components(std::array<T, N> const& components) : components_(components) {}

    [[nodiscard]] static constexpr std::size_t size() noexcept { return N; }
    /// The index is not checked.
    [[nodiscard]] constexpr T& operator[](std::size_t index) noexcept { return components_[index]; }
    [[nodiscard]] constexpr T const& operator[](std::size_t index) const noexcept {
        return components_[index];
    }
    [[nodiscard]] constexpr T* data() noexcept { return components_.data(); }
    [[nodiscard]] constexpr T const* data() const noexcept { return components_.data(); }
    [[nodiscard]] constexpr T* begin() noexcept { return data(); }
    [[nodiscard]] constexpr T const* begin() const noexcept { return data(); }
    [[nodiscard]] constexpr T* end() noexcept { return data() + N; }
    [[nodiscard]] constexpr T const* end() const noexcept { return data() + N; }

    friend constexpr bool operator==(Components const&, Components const&) = default;

private:
    std::array<T, N> components_{};
};

/// Three components, x, y and z.
template <class T>
class Vec3d : public Components<Vec3d<T>, T, 3> {
public:
    using Components<Vec3d, T, 3>::Components;
    constexpr Vec3d() = default;
    constexpr Vec3d(T x, T y, T z) : Components<Vec3d, T, 3>(std::array<T, 3>{x, y, z}) {}

    [[nodiscard]] constexpr T& x() noexcept { return (*this)[0]; }
    [[nodiscard]] constexpr T& y() noexcept { return (*this)[1]; }
    [[nodiscard]] constexpr T& z() noexcept { return (*this)[2]; }
    [[nodiscard]] constexpr T const& x() const noexcept { return (*this)[0]; }
    [[nodiscard]] constexpr T const& y() const noexcept { return (*this)[1]; }
    [[nodiscard]] constexpr T const& z() const noexcept { return (*this)[2]; }
};

/// Four components.
template <class T>
class Vec4d : public Components<Vec4d<T>, T, 4> {
public:
    using Components<Vec4d, T, 4>::Components;
    constexpr Vec4d() = default;
    constexpr Vec4d(T x, T y, T z, T w) : Components<Vec4d, T, 4>(std::array<T, 4>{x, y, z, w}) {}

    [[nodiscard]] constexpr T& x() noexcept { return (*this)[0]; }
    [[nodiscard]] constexpr T& y() noexcept { return (*this)[1]; }
    [[nodiscard]] constexpr T& z() noexcept { return (*this)[2]; }
    [[nodiscard]] constexpr T& w() noexcept { return (*this)[3]; }
    [[nodiscard]] constexpr T const& x() const noexcept { return (*this)[0]; }
    [[nodiscard]] constexpr T const& y() const noexcept { return (*this)[1]; }
    [[nodiscard]] constexpr T const& z() const noexcept { return (*this)[2]; }
    [[nodiscard]] constexpr T const& w() const noexcept { return (*this)[3]; }
};

/// A pair of small values; `SVec2d<int>` also serves as a pair of tokens.
template <class T>
class SVec2d : public Components<SVec2d<T>, T, 2> {
public:
    using Components<SVec2d, T, 2>::Components;
    constexpr SVec2d() = default;
    constexpr SVec2d(T x, T y) : Components<SVec2d, T, 2>(std::array<T, 2>{x, y}) {}

    [[nodiscard]] constexpr T& x() noexcept { return (*this)[0]; }
    [[nodiscard]] constexpr T& y() noexcept { return (*this)[1]; }
    [[nodiscard]] constexpr T const& x() const noexcept { return (*this)[0]; }
    [[nodiscard]] constexpr T const& y() const noexcept { return (*this)[1]; }
};

/// A triple of small values.
template <class T>
class SVec3d : public Components<SVec3d<T>, T, 3> {
public:
    using Components<SVec3d, T, 3>::Components;
    constexpr SVec3d() = default;
    constexpr SVec3d(T x, T y, T z) : Components<SVec3d, T, 3>(std::array<T, 3>{x, y, z}) {}

    [[nodiscard]] constexpr T& x() noexcept { return (*this)[0]; }
    [[nodiscard]] constexpr T& y() noexcept { return (*this)[1]; }
    [[nodiscard]] constexpr T& z() noexcept { return (*this)[2]; }
    [[nodiscard]] constexpr T const& x() const noexcept { return (*this)[0]; }
    [[nodiscard]] constexpr T const& y() const noexcept { return (*this)[1]; }
    [[nodiscard]] constexpr T const& z() const noexcept { return (*this)[2]; }
};

/// A 4x4 matrix: 16 components in storage order. Whether that is by rows or by columns is up to the
/// application.
template <class T>
class Mat4d : public Components<Mat4d<T>, T, 16> {
public:
    using Components<Mat4d, T, 16>::Components;
    constexpr Mat4d() = default;
    /// From 16 components in storage order.
    template <std::convertible_to<T>... C>
    requires(sizeof...(C) == 16) constexpr Mat4d(C... components)
        : Components<Mat4d, T, 16>(std::array<T, 16>{static_cast<T>(components)...}) {}
};

/// A coloured point of a scan. It is kept by the million, hence laid out without gaps at 2-byte alignment:
/// the bytes of the point, 16 bits that stay zero, four colour components. The point is therefore handed out
/// by value.
template <class Point>
class ScanPtColor {
public:
    using Color = std::array<std::uint8_t, 4>;

    constexpr ScanPtColor() = default;
    constexpr ScanPtColor(Point const& point, Color const& color)
        : point_(std::bit_cast<Bytes>(point)), color_(color) {}

    [[nodiscard]] constexpr Point getPoint() const noexcept { return std::bit_cast<Point>(point_); }
    constexpr void setPoint(Point const& point) noexcept { point_ = std::bit_cast<Bytes>(point); }
    [[nodiscard]] constexpr Color const& getColor() const noexcept { return color_; }
    constexpr void setColor(Color const& color) noexcept { color_ = color; }
    /// Always zero; part of the layout only.
    [[nodiscard]] constexpr std::uint16_t getReserved() const noexcept { return reserved_; }

    friend constexpr bool operator==(ScanPtColor const& a, ScanPtColor const& b) {
        return a.getPoint() == b.getPoint() && a.color_ == b.color_;
    }

private:
    using Bytes = std::array<std::byte, sizeof(Point)>;

    Bytes point_{};
    std::uint16_t reserved_ = 0;
    Color color_{};
};

static_assert(sizeof(ScanPtColor<Vec3d<float>>) == 18 && alignof(ScanPtColor<Vec3d<float>>) == 2);

} // namespace Zorvan
