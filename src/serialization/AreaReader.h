// SPDX-License-Identifier: MIT
#pragma once

#include "serialization/CharReader.h"

#include <cstddef>
#include <cstring>
#include <ios>
#include <string>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// Reads ahead in the characters that a stream has in its buffer already, with the operations of a
/// `CharReader`, and consumes nothing of the stream. Whatever goes wrong, the end of the buffered characters
/// among it, is a failure that lasts: the caller gives up and reads the stream itself, which tells what is
/// the matter.
class AreaReader {
public:
    static constexpr int END = CharReader::END;

    explicit AreaReader(std::string_view area) noexcept
        : position_(area.data()), end_(area.data() + area.size()) {}

    char const* position() const noexcept { return position_; }
    std::string_view rest() const noexcept { return {position_, static_cast<std::size_t>(end_ - position_)}; }
    void setPosition(char const* position) noexcept { position_ = position; }

    bool good() const noexcept { return !hasFailed_; }
    bool failed() const noexcept { return hasFailed_; }
    void setState(std::ios_base::iostate) noexcept { hasFailed_ = true; }

    int peek() noexcept {
        if (!hasFailed_ && position_ != end_)
            return static_cast<unsigned char>(*position_);
        hasFailed_ = true;
        return END;
    }

    int get() noexcept {
        int const c = peek();
        position_ += c != END;
        return c;
    }

    void putBack(int c) noexcept { position_ -= c != END; }

    void skipSpace() noexcept { skipWhile(CharReader::isSpace); }

    template <class Predicate>
    int skipWhile(Predicate wanted) {
        while (position_ != end_ && wanted(static_cast<unsigned char>(*position_)))
            ++position_;
        return peek();
    }

    template <class Predicate>
    int readWhile(std::string& text, Predicate wanted) {
        char const* const begin = position_;
        int const next = skipWhile(wanted);
        text.append(begin, static_cast<std::size_t>(position_ - begin));
        return next;
    }

    /// Consumes `text` when it comes next.
    template <std::size_t Size>
    bool take(char const (&literal)[Size]) noexcept {
        constexpr std::size_t length = Size - 1;
        if (static_cast<std::size_t>(end_ - position_) < length ||
            std::memcmp(position_, literal, length) != 0)
            return false;
        position_ += length;
        return true;
    }
    bool take(std::string_view text) noexcept {
        if (!rest().starts_with(text))
            return false;
        position_ += text.size();
        return true;
    }

    bool atSpace() noexcept { return CharReader::isSpace(peek()); }

    /// Consumes `word` when it comes next with white space behind it, which stays.
    bool takeWord(std::string_view word) noexcept {
        std::string_view const next = rest();
        if (next.size() <= word.size() || !next.starts_with(word) ||
            !CharReader::isSpace(static_cast<unsigned char>(next[word.size()])))
            return false;
        position_ += word.size();
        return true;
    }

private:
    char const* position_;
    char const* end_;
    bool hasFailed_ = false;
};

} // namespace Zorvan::AttributeContainer
