// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <streambuf>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// The characters that a stream buffer holds ready, which it would hand out one by one without being asked
/// for more; and the room that it has for such as are put one by one.
class StreamArea : private std::streambuf {
public:
    static std::string_view of(std::streambuf& buffer) {
        char const* const next = (buffer.*&StreamArea::gptr)();
        return {next, static_cast<std::size_t>((buffer.*&StreamArea::egptr)() - next)};
    }

    /// Consumes the first `count` of them.
    static void consume(std::streambuf& buffer, std::size_t count) {
        (buffer.*&StreamArea::setg)((buffer.*&StreamArea::eback)(), (buffer.*&StreamArea::gptr)() + count,
                                    (buffer.*&StreamArea::egptr)());
    }

    /// Where the next character goes.
    static char* place(std::streambuf& buffer) { return (buffer.*&StreamArea::pptr)(); }
    static std::ptrdiff_t room(std::streambuf& buffer) {
        return (buffer.*&StreamArea::epptr)() - place(buffer);
    }
    /// The first `count` characters of the room were put.
    static void advance(std::streambuf& buffer, int count) { (buffer.*&StreamArea::pbump)(count); }
};

} // namespace Zorvan::AttributeContainer
