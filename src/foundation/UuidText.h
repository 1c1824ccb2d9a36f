// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Uuid.h>

#include <cstddef>

namespace Zorvan::uuids {

/// The length of the canonical text of a UUID.
inline constexpr std::size_t uuidTextSize = 36;

/// Puts the canonical text of a UUID, 32 lower-case hexadecimal digits in groups of 8-4-4-4-12, and gives its
/// end.
inline char* putUuidText(char* to, uuid const& id) noexcept {
    constexpr char digits[] = "0123456789abcdef";
    for (std::size_t i = 0; i < id.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            *to++ = '-';
        *to++ = digits[id[i] >> 4];
        *to++ = digits[id[i] & 0xf];
    }
    return to;
}

} // namespace Zorvan::uuids
