// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <istream>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// The text of values for contenders that leave it to their users: always the shortest that is read back as
/// the same value.
template <class T>
void appendNumber(std::string& text, T value) {
    std::array<char, 32> digits;
    auto const end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    text.append(digits.data(), end);
}

template <class Range>
std::string numbersText(Range const& numbers) {
    std::string text;
    for (auto const number : numbers) {
        if (!text.empty())
            text += ' ';
        appendNumber(text, number);
    }
    return text;
}

template <class T>
T parseNumber(std::string_view text) {
    T value{};
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

/// Calls `take` for each of the numbers, which blanks divide.
template <class Take>
void parseNumbers(std::string_view text, Take take) {
    char const* position = text.data();
    char const* const end = position + text.size();
    while (position < end) {
        double value = 0;
        auto const result = std::from_chars(position, end, value);
        if (result.ec != std::errc())
            return;
        take(value);
        position = result.ptr + (result.ptr < end ? 1 : 0);
    }
}

inline std::vector<double> parseVector(std::string_view text) {
    std::vector<double> values;
    parseNumbers(text, [&](double value) { values.push_back(value); });
    return values;
}

inline std::array<double, 3> parsePosition(std::string_view text) {
    std::array<double, 3> values{};
    std::size_t index = 0;
    parseNumbers(text, [&](double value) {
        if (index < values.size())
            values[index++] = value;
    });
    return values;
}

using Id = std::array<std::uint8_t, 16>;

inline void appendId(std::string& text, Id const& id) {
    static constexpr char digits[] = "0123456789abcdef";
    for (std::uint8_t const byte : id) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
}

inline std::string idText(Id const& id) {
    std::string text;
    text.reserve(2 * id.size());
    appendId(text, id);
    return text;
}

inline Id parseId(std::string_view text) {
    auto const digit = [&](std::size_t i) {
        return i < text.size() ? (text[i] <= '9' ? text[i] - '0' : text[i] - 'a' + 10) : 0;
    };
    Id id{};
    for (std::size_t i = 0; i < id.size(); ++i)
        id[i] = static_cast<std::uint8_t>(digit(2 * i) * 16 + digit(2 * i + 1));
    return id;
}

/// Reads a document where it is; the usual string stream would copy it first.
class ViewBuffer : public std::streambuf {
public:
    explicit ViewBuffer(std::string_view text) {
        char* const begin = const_cast<char*>(text.data()); // never written to
        setg(begin, begin, begin + text.size());
    }

private:
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction, std::ios_base::openmode) override {
        char* const from = direction == std::ios_base::beg   ? eback()
                           : direction == std::ios_base::cur ? gptr()
                                                             : egptr();
        if (offset < eback() - from || offset > egptr() - from)
            return pos_type(off_type(-1));
        setg(eback(), from + offset, egptr());
        return gptr() - eback();
    }
    pos_type seekpos(pos_type position, std::ios_base::openmode mode) override {
        return seekoff(off_type(position), std::ios_base::beg, mode);
    }
};

class ViewStream : public std::istream {
public:
    explicit ViewStream(std::string_view text) : std::istream(nullptr), buffer_(text) { rdbuf(&buffer_); }

private:
    ViewBuffer buffer_;
};

} // namespace bench
