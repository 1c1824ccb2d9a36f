// SPDX-License-Identifier: MIT
#include "platform/Utf16.h"

#include <cstddef>
#include <cstdint>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::uint32_t replacement = 0xFFFD;

/// What the first byte of a sequence says: how many follow, and between which bounds the next one lies, so
/// that overlong forms, surrogates and numbers beyond U+10FFFF are found out by their second byte.
struct Lead {
    int more = 0;
    unsigned char low = 0x80, high = 0xBF;
};

Lead leadOf(unsigned char byte) {
    if (byte >= 0xC2 && byte <= 0xDF)
        return {1};
    if (byte >= 0xE0 && byte <= 0xEF)
        return {2, static_cast<unsigned char>(byte == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(byte == 0xED ? 0x9F : 0xBF)};
    if (byte >= 0xF0 && byte <= 0xF4)
        return {3, static_cast<unsigned char>(byte == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(byte == 0xF4 ? 0x8F : 0xBF)};
    return {};
}

/// The character at `position`, which moves behind it.
std::uint32_t nextCharacter(std::string_view text, std::size_t& position) {
    auto const first = static_cast<unsigned char>(text[position++]);
    if (first < 0x80)
        return first;
    auto lead = leadOf(first);
    if (lead.more == 0)
        return replacement;
    std::uint32_t character = first & (0x3FU >> lead.more);
    for (; lead.more > 0; --lead.more) {
        if (position == text.size())
            return replacement;
        auto const byte = static_cast<unsigned char>(text[position]);
        if (byte < lead.low || byte > lead.high)
            return replacement;
        ++position;
        character = character << 6 | (byte & 0x3FU);
        lead.low = 0x80;
        lead.high = 0xBF;
    }
    return character;
}

bool isHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

} // namespace

Utf16String toUtf16(std::string_view text) {
    Utf16String result;
    result.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        std::uint32_t const character = nextCharacter(text, position);
        if (character < 0x10000) {
            result += static_cast<Utf16Unit>(character);
        } else {
            result += static_cast<Utf16Unit>(0xD800 + ((character - 0x10000) >> 10));
            result += static_cast<Utf16Unit>(0xDC00 + (character & 0x3FF));
        }
    }
    return result;
}

std::string toUtf8(Utf16View text) {
    std::string result;
    result.reserve(text.size());
    auto const append = [&result](std::uint32_t byte) { result += static_cast<char>(byte); };
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t character = text[i];
        if (isHighSurrogate(character) && i + 1 < text.size() && isLowSurrogate(text[i + 1]))
            character = 0x10000 + ((character & 0x3FF) << 10 | (text[++i] & 0x3FFU));
        else if (isHighSurrogate(character) || isLowSurrogate(character))
            character = replacement;
        if (character < 0x80) {
            append(character);
            continue;
        }
        if (character < 0x800) {
            append(0xC0 | character >> 6);
        } else {
            if (character < 0x10000) {
                append(0xE0 | character >> 12);
            } else {
                append(0xF0 | character >> 18);
                append(0x80 | (character >> 12 & 0x3F));
            }
            append(0x80 | (character >> 6 & 0x3F));
        }
        append(0x80 | (character & 0x3F));
    }
    return result;
}

} // namespace Zorvan::AttributeContainer
