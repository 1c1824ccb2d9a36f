// SPDX-License-Identifier: MIT
#include <AttributeContainer/Uuid.h>

#include "foundation/UuidText.h"

#include <array>
#include <cstdint>

namespace Zorvan::uuids {

namespace {

constexpr auto digitValues = [] {
    std::array<std::int8_t, 256> values{};
    values.fill(-1);
    for (int digit = 0; digit < 16; ++digit) {
        values[static_cast<unsigned char>("0123456789abcdef"[digit])] = static_cast<std::int8_t>(digit);
        values[static_cast<unsigned char>("0123456789ABCDEF"[digit])] = static_cast<std::int8_t>(digit);
    }
    return values;
}();

/// -1 when the character is no hexadecimal digit.
int digitValue(char character) noexcept { return digitValues[static_cast<unsigned char>(character)]; }

} // namespace

std::string uuid::toString() const {
    std::string text(uuidTextSize, '\0');
    putUuidText(text.data(), *this);
    return text;
}

std::optional<uuid> uuid::fromString(std::string_view text) noexcept {
    if (text.starts_with('{')) {
        if (text.size() < 2 || !text.ends_with('}'))
            return std::nullopt;
        text = text.substr(1, text.size() - 2);
    }
    uuid result;
    std::size_t count = 0; // of digits
    for (char const character : text) {
        if (character == '-')
            continue;
        int const digit = digitValue(character);
        if (digit < 0 || count == 2 * size())
            return std::nullopt;
        std::uint8_t& byte = result[count / 2];
        byte = static_cast<std::uint8_t>(byte << 4 | digit);
        ++count;
    }
    if (count != 2 * size())
        return std::nullopt;
    return result;
}

} // namespace Zorvan::uuids
