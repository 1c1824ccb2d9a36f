// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <streambuf>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// The characters that a stream buffer holds ready, which it would hand out one by one without being asked
/// for more.
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
};

} // namespace Zorvan::AttributeContainer
