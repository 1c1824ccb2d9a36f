// SPDX-License-Identifier: MIT
#pragma once

#include <istream>
#include <streambuf>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// Reads from memory that somebody else owns, without a copy. It has no positions.
class MemoryInBuffer : public std::streambuf {
public:
    explicit MemoryInBuffer(std::string_view text) {
        char* begin = const_cast<char*>(text.data()); // Never written: there is no put area.
        setg(begin, begin, begin + text.size());
    }
};

/// An input stream on a MemoryInBuffer.
class MemoryInStream : private MemoryInBuffer, public std::istream {
public:
    explicit MemoryInStream(std::string_view text) : MemoryInBuffer(text), std::istream(this) {}
};

} // namespace Zorvan::AttributeContainer
