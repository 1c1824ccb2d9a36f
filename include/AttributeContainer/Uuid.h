// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Zorvan::uuids {

/// A UUID: sixteen bytes in the order in which the canonical text lists them. Ordered like that text.
class uuid {
public:
    /// The nil UUID.
    constexpr uuid() = default;
    explicit constexpr uuid(std::array<std::uint8_t, 16> const& bytes) : bytes_(bytes) {}

    [[nodiscard]] static constexpr std::size_t size() noexcept { return 16; }
    /// The index is not checked.
    [[nodiscard]] constexpr std::uint8_t& operator[](std::size_t index) noexcept { return bytes_[index]; }
    [[nodiscard]] constexpr std::uint8_t const& operator[](std::size_t index) const noexcept {
        return bytes_[index];
    }
    [[nodiscard]] constexpr std::uint8_t* data() noexcept { return bytes_.data(); }
    [[nodiscard]] constexpr std::uint8_t const* data() const noexcept { return bytes_.data(); }
    [[nodiscard]] constexpr std::uint8_t* begin() noexcept { return data(); }
    [[nodiscard]] constexpr std::uint8_t const* begin() const noexcept { return data(); }
    [[nodiscard]] constexpr std::uint8_t* end() noexcept { return data() + size(); }
    [[nodiscard]] constexpr std::uint8_t const* end() const noexcept { return data() + size(); }

    /// True when all bytes are zero.
    [[nodiscard]] constexpr bool isNil() const noexcept { return *this == uuid(); }

    /// 32 lower-case hexadecimal digits in groups of 8-4-4-4-12.
    [[nodiscard]] KX_ATTRIBUTECONTAINER_API std::string toString() const;
    /// Reads pairs of hexadecimal digits, exactly 16 of them. Hyphens are ignored wherever they stand; an
    /// opening brace in front requires a closing one at the end. Anything else gives an empty result.
    [[nodiscard]] KX_ATTRIBUTECONTAINER_API static std::optional<uuid>
    fromString(std::string_view text) noexcept;

    friend constexpr bool operator==(uuid const&, uuid const&) = default;
    // NOLINTNEXTLINE(modernize-use-nullptr): what the compiler makes of it compares with 0.
    friend constexpr std::strong_ordering operator<=>(uuid const&, uuid const&) = default;

private:
    std::array<std::uint8_t, 16> bytes_{};
};

} // namespace Zorvan::uuids
