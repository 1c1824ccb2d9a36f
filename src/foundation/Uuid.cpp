// SPDX-License-Identifier: MIT
#include <AttributeContainer/Uuid.h>

#include "foundation/UuidText.h"

namespace Zorvan::uuids {

namespace {

/// -1 when the character is no hexadecimal digit.
int digitValue(char character) noexcept {
    if (character >= '0' && character <= '9')
        return character - '0';
    if (character >= 'a' && character <= 'f')
        return character - 'a' + 10;
    if (character >= 'A' && character <= 'F')
        return character - 'A' + 10;
    return -1;
}

} // namespace

std::string uuid::toString() const {
    auto const text = uuidText(*this);
    return {text.begin(), text.end()};
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
