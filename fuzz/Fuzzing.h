// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

/// The function that the fuzzing engine calls with each input.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace fuzzing {

/// Ends the program, which the engine takes for a finding, unless `holds`.
inline void require(bool holds, char const* what, std::string_view first = {}, std::string_view second = {}) {
    if (holds)
        return;
    // They may hold anything, zero bytes included.
    std::fprintf(stderr, "does not hold: %s\n---- first\n", what);
    std::fwrite(first.data(), 1, first.size(), stderr);
    std::fputs("\n---- second\n", stderr);
    std::fwrite(second.data(), 1, second.size(), stderr);
    std::fputs("\n----\n", stderr);
    std::abort();
}

/// Takes an input apart from its front; what is missing is 0.
class Input {
public:
    Input(std::uint8_t const* data, std::size_t size) : rest_(reinterpret_cast<char const*>(data), size) {}

    bool empty() const { return rest_.empty(); }
    std::uint8_t byte() {
        if (rest_.empty())
            return 0;
        auto const result = static_cast<std::uint8_t>(rest_.front());
        rest_.remove_prefix(1);
        return result;
    }
    /// A number below `limit`.
    std::size_t below(std::size_t limit) { return byte() % limit; }
    /// At most `length` bytes.
    std::string_view text(std::size_t length) {
        std::string_view const result = rest_.substr(0, length);
        rest_.remove_prefix(result.size());
        return result;
    }
    /// Up to a separator, which goes too, or all.
    std::string_view upTo(std::string_view separator) {
        std::size_t const at = rest_.find(separator);
        std::string_view const result = rest_.substr(0, at);
        rest_.remove_prefix(at == rest_.npos ? rest_.size() : at + separator.size());
        return result;
    }
    std::string_view rest() const { return rest_; }

private:
    std::string_view rest_;
};

} // namespace fuzzing
