// SPDX-License-Identifier: MIT
#pragma once

#include <istream>
#include <streambuf>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// Reads from memory that somebody else owns, without a copy.
class MemoryInBuffer : public std::streambuf {
public:
    explicit MemoryInBuffer(std::string_view text) {
        char* begin = const_cast<char*>(text.data()); // Never written: there is no put area.
        setg(begin, begin, begin + text.size());
    }

protected:
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode which) override {
        if (!(which & std::ios_base::in))
            return pos_type(off_type(-1));
        off_type const base = direction == std::ios_base::beg   ? 0
                              : direction == std::ios_base::cur ? gptr() - eback()
                                                                : egptr() - eback();
        return seekpos(base + offset, which);
    }
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override {
        off_type const target = position;
        if (!(which & std::ios_base::in) || target < 0 || target > egptr() - eback())
            return pos_type(off_type(-1));
        setg(eback(), eback() + target, egptr());
        return position;
    }
};

/// An input stream on a MemoryInBuffer.
class MemoryInStream : private MemoryInBuffer, public std::istream {
public:
    explicit MemoryInStream(std::string_view text) : MemoryInBuffer(text), std::istream(this) {}
};

} // namespace Zorvan::AttributeContainer
