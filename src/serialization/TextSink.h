// SPDX-License-Identifier: MIT
#pragma once

#include "serialization/StreamArea.h"

#include <charconv>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string_view>
#include <typeinfo>

namespace Zorvan::AttributeContainer {

/// The precision with which values leave their stream.
constexpr std::streamsize USUAL_PRECISION = 8;

/// Collects text and passes it to the buffer of a stream in pieces. Nothing is written to a stream that is
/// not good; a buffer that takes less than it is given, or throws, makes the stream bad. The text is with the
/// stream only after `finish`; the destructor writes nothing, because the stream may throw. Until `finish`
/// nobody else may write to the stream.
class TextSink {
public:
    explicit TextSink(std::ostream& out) noexcept : out_(out), state_(out) { begin(); }
    TextSink(TextSink const&) = delete;
    TextSink& operator=(TextSink const&) = delete;

    std::ostream& stream() const noexcept { return out_; }

    [[gnu::always_inline]] TextSink& append(char c) {
        if (position_ == end_) [[unlikely]]
            makeRoom();
        *position_++ = c;
        return *this;
    }

    TextSink& append(std::string_view text) {
        if (text.size() > room()) [[unlikely]]
            return appendLong(text);
        std::memcpy(position_, text.data(), text.size());
        position_ += text.size();
        return *this;
    }

    /// Room for so many characters, less than the sink keeps itself, which `commit` appends up to the end
    /// that it is given.
    char* reserve(std::size_t size) {
        if (size > room()) [[unlikely]]
            makeRoom();
        return position_;
    }
    void commit(char* end) noexcept { position_ = end; }

    /// Appends a text between two marks as a whole. False, and no change, when there is no room for it.
    bool appendBetween(char mark, std::string_view text) {
        if (room() < 2 || text.size() > room() - 2) [[unlikely]]
            return false;
        char* const to = position_;
        *to = mark;
        std::memcpy(to + 1, text.data(), text.size());
        to[text.size() + 1] = mark;
        position_ = to + text.size() + 2;
        return true;
    }

    /// A literal: its length is known to the compiler, and its copy a few instructions.
    template <std::size_t Size>
    [[gnu::always_inline]] TextSink& append(char const (&literal)[Size]) {
        constexpr std::size_t LENGTH = Size - 1;
        if (LENGTH > room()) [[unlikely]]
            return appendLong(std::string_view(literal, LENGTH));
        std::memcpy(position_, literal, LENGTH);
        position_ += LENGTH;
        return *this;
    }

    /// Appends an integer in decimal; an 8-bit one as a number too.
    template <class T>
    TextSink& appendInteger(T value) {
        constexpr std::size_t LONGEST = 24;
        char* const to = reserve(LONGEST);
        if constexpr (sizeof(T) == 1)
            commit(std::to_chars(to, end_, static_cast<int>(value)).ptr);
        else
            commit(std::to_chars(to, end_, value).ptr);
        return *this;
    }

    /// Whether a line feed is a character like any other.
    bool keepsLines() const noexcept { return isString_; }

    /// Whether text on its way may call code of applications, which may change what is being written.
    bool callsOthers() const {
        const std::streambuf* const buffer = state_.rdbuf();
        return !isString_ && buffer && (state_.tie() || typeid(*buffer) != typeid(std::filebuf));
    }

    /// A line feed, with which the stream is flushed. A string buffer has nothing to flush.
    [[gnu::always_inline]] TextSink& newline() {
        append('\n');
        if (!isString_) [[unlikely]]
            flush();
        return *this;
    }

    /// Goes on after `finish` and what others may have written since, to this buffer or to another one.
    void resume() noexcept {
        if (isDirect_ && state_.rdbuf() == streamBuffer_ && state_.good() &&
            StreamArea::place(*streamBuffer_) == start_ && StreamArea::room(*streamBuffer_) >= end_ - start_)
            [[likely]]
            return;
        begin();
    }

    /// Passes on what was collected.
    void finish() {
        if (isDirect_) {
            StreamArea::advance(*streamBuffer_, static_cast<int>(position_ - start_));
            start_ = position_;
            return;
        }
        std::string_view const text(start_, static_cast<std::size_t>(position_ - start_));
        position_ = start_;
        write(text);
    }

private:
    static constexpr std::size_t CAPACITY = 2048;

    std::size_t room() const noexcept { return static_cast<std::size_t>(end_ - position_); }

    /// Finds out where the text goes; nothing is collected.
    void begin() noexcept {
        useOwnBuffer();
        std::streambuf* const buffer = state_.rdbuf();
        if (!buffer || !state_.good())
            return;
        isString_ = typeid(*buffer) == typeid(std::stringbuf) && !state_.tie();
        std::ptrdiff_t const size = StreamArea::room(*buffer);
        if (size < static_cast<std::ptrdiff_t>(LEAST_ROOM))
            return;
        isDirect_ = true;
        streamBuffer_ = buffer;
        start_ = position_ = StreamArea::place(*buffer);
        end_ = start_ + (size < MOST_ROOM ? size : MOST_ROOM);
    }

    [[gnu::noinline]] void flush() {
        finish();
        out_.flush();
        begin(); // A buffer that passes on what it has starts anew.
    }

    /// Goes over to the own buffer, which is empty then.
    void makeRoom() {
        finish();
        useOwnBuffer();
    }

    void useOwnBuffer() noexcept {
        isDirect_ = false;
        start_ = position_ = buffer_;
        end_ = buffer_ + CAPACITY;
    }

    TextSink& appendLong(std::string_view text) {
        makeRoom();
        if (text.size() <= CAPACITY)
            return append(text);
        write(text);
        return *this;
    }

    void write(std::string_view text) {
        if (text.empty() || !state_.good())
            return;
        auto const size = static_cast<std::streamsize>(text.size());
        bool complete = false;
        try {
            complete = out_.rdbuf()->sputn(text.data(), size) == size;
        } catch (...) {
            complete = false;
        }
        if (!complete)
            out_.setstate(std::ios_base::badbit);
    }

    static constexpr std::size_t LEAST_ROOM = 256; ///< with less the own buffer is better
    static constexpr std::ptrdiff_t MOST_ROOM = 1 << 30;

    std::ostream& out_;
    std::ios& state_;                        ///< of the stream: which costs a look-up each time to get to
    std::streambuf* streamBuffer_ = nullptr; ///< the stream's, when the text goes there directly
    bool isDirect_ = false;                  ///< the text goes into the put area of the stream's buffer
    bool isString_ = false;
    char buffer_[CAPACITY]; // not initialised: a sink is made for each value
    char* start_ = buffer_; ///< of what was collected
    char* position_ = buffer_;
    char* end_ = buffer_ + CAPACITY;
};

} // namespace Zorvan::AttributeContainer
