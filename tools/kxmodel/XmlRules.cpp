// SPDX-License-Identifier: MIT
#include "XmlRules.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace kxmodel {

namespace {

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

constexpr Range starts[] = {{':', ':'},       {'A', 'Z'},       {'_', '_'},       {'a', 'z'},
                            {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
                            {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
                            {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};
constexpr Range others[] = {{'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};
constexpr Range texts[] = {{'\t', '\n'}, {'\r', '\r'}, {0x20, 0xD7FF}, {0xE000, 0xFFFD}, {0x10000, 0x10FFFF}};

template <std::size_t N>
bool isIn(Range const (&ranges)[N], std::uint32_t character) {
    return std::any_of(std::begin(ranges), std::end(ranges), [character](Range const& range) {
        return character >= range.first && character <= range.last;
    });
}

/// Takes a character off the front of a text that has one. 0, which no text of XML has, when it is no
/// well-formed UTF-8.
std::uint32_t takeCharacter(std::string_view& text) {
    auto const lead = static_cast<unsigned char>(text[0]);
    std::size_t const length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (length == 0 || text.size() < length)
        return 0;
    std::uint32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        auto const byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xC0) != 0x80)
            return 0;
        character = (character << 6) | (byte & 0x3Fu);
    }
    text.remove_prefix(length);
    // Longer than needed; the other forms that are not allowed give characters that XML does not have.
    bool const isTooLong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
    return isTooLong ? 0 : character;
}

} // namespace

bool isXmlName(std::string_view text) {
    if (text.empty() || !isIn(starts, takeCharacter(text)))
        return false;
    while (!text.empty())
        if (std::uint32_t const next = takeCharacter(text); !isIn(starts, next) && !isIn(others, next))
            return false;
    return true;
}

bool isXmlText(std::string_view text) {
    while (!text.empty())
        if (!isIn(texts, takeCharacter(text)))
            return false;
    return true;
}

} // namespace kxmodel
