// SPDX-License-Identifier: MIT
#include "serialization/XmlName.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace Zorvan::AttributeContainer {

namespace {

/// The code point at the front of a UTF-8 text, which is removed; false when there is no proper one.
bool takeCodePoint(std::string_view& text, std::uint32_t& point) {
    auto const byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    std::size_t const length = byte(0) < 0x80   ? 1
                               : byte(0) < 0xC2 ? 0
                               : byte(0) < 0xE0 ? 2
                               : byte(0) < 0xF0 ? 3
                                                : 4;
    if (length == 0 || length > text.size())
        return false;
    point = length == 1 ? byte(0) : byte(0) & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return false;
        point = (point << 6) | (byte(i) & 0x3Fu);
    }
    constexpr std::array<std::uint32_t, 5> SMALLEST = {0, 0, 0x80, 0x800, 0x10000};
    text.remove_prefix(length);
    return point >= SMALLEST[length];
}

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

template <std::size_t N>
bool isIn(std::array<Range, N> const& ranges, std::uint32_t point) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [point](Range range) { return point >= range.first && point <= range.last; });
}

constexpr std::array<Range, 16> NAME_START = {{{':', ':'},
                                               {'A', 'Z'},
                                               {'_', '_'},
                                               {'a', 'z'},
                                               {0xC0, 0xD6},
                                               {0xD8, 0xF6},
                                               {0xF8, 0x2FF},
                                               {0x370, 0x37D},
                                               {0x37F, 0x1FFF},
                                               {0x200C, 0x200D},
                                               {0x2070, 0x218F},
                                               {0x2C00, 0x2FEF},
                                               {0x3001, 0xD7FF},
                                               {0xF900, 0xFDCF},
                                               {0xFDF0, 0xFFFD},
                                               {0x10000, 0xEFFFF}}};
constexpr std::array<Range, 5> NAME_REST = {
    {{'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}}};

} // namespace

bool isXmlName(std::string_view name) {
    bool first = true;
    while (!name.empty()) {
        std::uint32_t point = 0;
        if (!takeCodePoint(name, point) || !(isIn(NAME_START, point) || (!first && isIn(NAME_REST, point))))
            return false;
        first = false;
    }
    return !first;
}

} // namespace Zorvan::AttributeContainer
