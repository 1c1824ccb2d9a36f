// SPDX-License-Identifier: MIT
#include "JsonText.h"

#include <algorithm>
#include <cstddef>

namespace kxmodel {

namespace {

/// The length of the UTF-8 sequence of one character beyond ASCII at the start of a text, 0 when it is none.
std::size_t sequenceLength(std::string_view text) {
    auto const byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    unsigned char const lead = byteAt(0);
    std::size_t const length = lead >= 0xC2 && lead < 0xE0 ? 2
                               : lead >> 4 == 0xE          ? 3
                               : lead >> 3 == 0x1E         ? 4
                                                           : 0;
    if (length == 0 || length > text.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if (byteAt(i) >> 6 != 2)
            return 0;
    unsigned char const second = byteAt(1);
    bool const isOverlong = (lead == 0xE0 && second < 0xA0) || (lead == 0xF0 && second < 0x90);
    bool const isSurrogate = lead == 0xED && second >= 0xA0;
    bool const isBeyond = lead > 0xF4 || (lead == 0xF4 && second >= 0x90);
    return isOverlong || isSurrogate || isBeyond ? 0 : length;
}

} // namespace

void appendJsonString(std::string& out, std::string_view text) {
    constexpr char digits[] = "0123456789ABCDEF";
    out += '"';
    for (std::size_t i = 0; i < text.size();) {
        auto const byte = static_cast<unsigned char>(text[i]);
        std::size_t length = 1;
        if (byte >= 0x80) {
            length = sequenceLength(text.substr(i));
            if (length != 0)
                out.append(text, i, length);
            else
                out.append("\\\\uFF").append({digits[byte >> 4], digits[byte & 15]});
            length = std::max<std::size_t>(length, 1);
        } else if (byte < 0x20) {
            if (byte == '\n')
                out += "\\n";
            else
                out.append("\\u00").append({digits[byte >> 4], digits[byte & 15]});
        } else {
            if (byte == '"' || byte == '\\')
                out += '\\';
            out += text[i];
        }
        i += length;
    }
    out += '"';
}

} // namespace kxmodel
