// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Uuid.h>

#include <array>
#include <cstddef>

namespace Zorvan::uuids {

/// The canonical text of a UUID, 32 lower-case hexadecimal digits in groups of 8-4-4-4-12.
inline std::array<char, 36> uuidText(uuid const& id) noexcept {
    constexpr char digits[] = "0123456789abcdef";
    std::array<char, 36> text{};
    std::size_t length = 0;
    for (std::size_t i = 0; i < id.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text[length++] = '-';
        text[length++] = digits[id[i] >> 4];
        text[length++] = digits[id[i] & 0xf];
    }
    return text;
}

} // namespace Zorvan::uuids
