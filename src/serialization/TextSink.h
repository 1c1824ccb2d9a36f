// SPDX-License-Identifier: MIT
#pragma once

#include <charconv>
#include <cstddef>
#include <cstring>
#include <ostream>
#include <streambuf>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// Collects text and passes it to the buffer of a stream in pieces. Nothing is written to a stream that is
/// not good; a buffer that takes less than it is given, or throws, makes the stream bad. The text is with the
/// stream only after `finish`; the destructor writes nothing, because the stream may throw.
class TextSink {
public:
    explicit TextSink(std::ostream& out) noexcept : out_(out) {}
    TextSink(TextSink const&) = delete;
    TextSink& operator=(TextSink const&) = delete;

    std::ostream& stream() const noexcept { return out_; }

    TextSink& append(char c) {
        if (size_ == CAPACITY)
            finish();
        buffer_[size_++] = c;
        return *this;
    }

    TextSink& append(std::string_view text) {
        if (text.size() > CAPACITY - size_) {
            finish();
            if (text.size() > CAPACITY) {
                write(text);
                return *this;
            }
        }
        std::memcpy(buffer_ + size_, text.data(), text.size());
        size_ += text.size();
        return *this;
    }

    /// Appends an integer in decimal; an 8-bit one as a number too.
    template <class T>
    TextSink& appendInteger(T value) {
        constexpr std::size_t LONGEST = 24;
        if (LONGEST > CAPACITY - size_)
            finish();
        if constexpr (sizeof(T) == 1)
            size_ = end(std::to_chars(buffer_ + size_, buffer_ + CAPACITY, static_cast<int>(value)).ptr);
        else
            size_ = end(std::to_chars(buffer_ + size_, buffer_ + CAPACITY, value).ptr);
        return *this;
    }

    /// Passes on what was collected.
    void finish() {
        std::size_t const size = size_;
        size_ = 0;
        write(std::string_view(buffer_, size));
    }

private:
    static constexpr std::size_t CAPACITY = 2048;

    std::size_t end(char const* position) const { return static_cast<std::size_t>(position - buffer_); }

    void write(std::string_view text) {
        if (text.empty() || !out_.good())
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

    std::ostream& out_;
    std::size_t size_ = 0;
    char buffer_[CAPACITY]; // not initialised: a sink is made for each value
};

} // namespace Zorvan::AttributeContainer
