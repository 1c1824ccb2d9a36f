// SPDX-License-Identifier: MIT
#pragma once

#include "Progress.h"

#include <algorithm>
#include <cstddef>
#include <ios>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>

namespace kxmodel {

/// How often the progress is told, in bytes.
constexpr std::size_t progressInterval = std::size_t{1} << 16;

/// Reads a text where it is, and tells how far the reader has come.
class TextInput : public std::streambuf {
public:
    /// Both must outlive this; without a progress nobody is told.
    TextInput(std::string_view text, Progress* progress) : progress_(progress) {
        char* const begin = const_cast<char*>(text.data()); // Never written: there is no put area.
        setg(begin, begin, begin);
        end_ = begin + text.size();
    }

protected:
    // The reader sees the text up to where the progress is told next.
    int_type underflow() override {
        if (progress_)
            progress_->reach(static_cast<std::size_t>(gptr() - eback()));
        setg(eback(), gptr(), gptr() + std::min<std::ptrdiff_t>(end_ - gptr(), progressInterval));
        return gptr() < egptr() ? traits_type::to_int_type(*gptr()) : traits_type::eof();
    }
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode which) override {
        off_type base = 0;
        if (direction != std::ios_base::beg)
            base = (direction == std::ios_base::cur ? gptr() : end_) - eback();
        return seekpos(base + offset, which);
    }
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override {
        off_type const target = position;
        if (!(which & std::ios_base::in) || target < 0 || target > end_ - eback())
            return pos_type(off_type(-1));
        setg(eback(), eback() + target, eback() + target);
        return position;
    }

private:
    char* end_;
    Progress* progress_;
};

/// Collects a text, and tells how long it has become.
class TextOutput : public std::streambuf {
public:
    /// A text that grows leaves what it has grown out of behind; what is reserved in vain is never touched.
    TextOutput(Progress* progress, std::size_t expectedSize) : progress_(progress) {
        text_.reserve(expectedSize + expectedSize / 4);
    }

    /// The text; this is empty then.
    std::string take() { return std::exchange(text_, {}); }

protected:
    int_type overflow(int_type character) override {
        if (!traits_type::eq_int_type(character, traits_type::eof())) {
            char const byte = traits_type::to_char_type(character);
            return xsputn(&byte, 1), character;
        }
        return traits_type::not_eof(character);
    }
    std::streamsize xsputn(char const* bytes, std::streamsize count) override {
        text_.append(bytes, static_cast<std::size_t>(count));
        if (progress_ && text_.size() - told_ >= progressInterval)
            progress_->reach(told_ = text_.size());
        return count;
    }

private:
    std::string text_;
    std::size_t told_ = 0;
    Progress* progress_;
};

} // namespace kxmodel
