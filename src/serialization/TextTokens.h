// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace Zorvan::AttributeContainer {

/// A piece of a text between white space. `match` is the index of the other brace, `complete` whether there
/// is one, or whether a string has its closing quote.
struct TextToken {
    static constexpr std::size_t NO_MATCH = static_cast<std::size_t>(-1);

    enum Kind { Word, String, Open, Close };
    Kind kind = Word;
    bool complete = false;
    std::size_t begin = 0;
    std::size_t end = 0;
    std::size_t line = 0;
    std::size_t endLine = 0;
    std::size_t match = NO_MATCH;
};

/// Where a text stands: on the top level of what a reader takes entry by entry, or in a block.
enum class TextLevel : std::uint8_t { Nested, Top };

/// Splits a text into tokens as it is read raw: a quote opens a string at the start of a word and behind
/// "=>", and the keyword of an entry of the top level reaches to the next white space.
std::vector<TextToken> splitText(std::string_view text, TextLevel level = TextLevel::Nested);

/// The position behind the string whose opening quote is at `begin`; `complete`: it has a closing one.
std::size_t endOfString(std::string_view text, std::size_t begin, bool& complete);

} // namespace Zorvan::AttributeContainer
