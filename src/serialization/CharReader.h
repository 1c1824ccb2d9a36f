// SPDX-License-Identifier: MIT
#pragma once

#include "serialization/StreamArea.h"

#include <algorithm>
#include <cstddef>
#include <istream>
#include <streambuf>
#include <string>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// Reads single characters of a stream through its buffer, without a sentry for each, and leaves the state
/// bits that the unformatted operations of the stream would leave: `eofbit` where the end is seen, `failbit`
/// where a character that was asked for is not there, `badbit` where the buffer throws. It keeps nothing of
/// its own, so that readers of one stream may be mixed and nested freely.
/// @throws std::ios_base::failure when the application asked the stream for exceptions
class CharReader {
public:
    static constexpr int END = std::istream::traits_type::eof();

    explicit CharReader(std::istream& in) noexcept : in_(in) {}

    std::istream& stream() const noexcept { return in_; }
    bool good() const { return in_.good(); }
    bool failed() const { return in_.fail(); }
    void setState(std::ios_base::iostate bits) { in_.setstate(bits); }

    /// The next character (0 to 255) or END; consumes nothing.
    int peek() {
        if (!ready())
            return END;
        int const c = guarded([](std::streambuf& buffer) { return buffer.sgetc(); });
        if (c == END)
            setState(std::ios_base::eofbit);
        return c;
    }

    /// Consumes and returns the next character (0 to 255); END, with the stream failed, when there is none.
    int get() {
        if (!ready())
            return END;
        int const c = guarded([](std::streambuf& buffer) { return buffer.sbumpc(); });
        if (c == END)
            setState(std::ios_base::eofbit | std::ios_base::failbit);
        return c;
    }

    /// Gives `c`, which was read last, back. Does nothing for END; a buffer that cannot take it makes the
    /// stream bad.
    void putBack(int c) {
        if (c == END)
            return;
        in_.clear(in_.rdstate() & ~std::ios_base::eofbit);
        if (!ready())
            return;
        int const result = guarded([c](std::streambuf& buffer) {
            return buffer.sputbackc(std::istream::traits_type::to_char_type(c));
        });
        if (result == END)
            setState(std::ios_base::badbit);
    }

    /// Consumes white space. At the end of the input only `eofbit` is set.
    void skipSpace() {
        if (!ready())
            return;
        skipWhile(isSpace);
    }

    /// Consumes characters while `wanted(int)` holds and returns the first other one, unconsumed, or END
    /// (`eofbit`).
    template <class Predicate>
    int skipWhile(Predicate wanted) {
        return run(wanted, [](std::string_view) {});
    }

    /// Like `skipWhile`, and appends what it consumes to `text`.
    template <class Predicate>
    int readWhile(std::string& text, Predicate wanted) {
        return run(wanted, [&text](std::string_view characters) { text.append(characters); });
    }

    /// White space of the classic locale.
    static constexpr bool isSpace(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

private:
    /// Like a sentry: a stream that is not good fails.
    bool ready() {
        if (in_.good())
            return true;
        setState(std::ios_base::failbit);
        return false;
    }

    template <class Operation>
    int guarded(Operation operation) {
        try {
            return operation(*in_.rdbuf());
        } catch (...) {
            setState(std::ios_base::badbit);
            return END;
        }
    }

    template <class Predicate, class Consume>
    int run(Predicate wanted, Consume consume) {
        if (!ready())
            return END;
        int c = guarded([](std::streambuf& buffer) { return buffer.sgetc(); });
        while (c != END) {
            std::streambuf& buffer = *in_.rdbuf();
            std::string_view const area = StreamArea::of(buffer);
            if (area.empty()) { // a buffer that buffers nothing
                if (!wanted(c))
                    return c;
                char const single = std::istream::traits_type::to_char_type(c);
                consume(std::string_view(&single, 1));
                c = guarded([](std::streambuf& unbuffered) { return unbuffered.snextc(); });
                continue;
            }
            std::size_t count = 0;
            while (count < area.size() && wanted(static_cast<unsigned char>(area[count])))
                ++count;
            consume(area.substr(0, count));
            StreamArea::consume(buffer, count);
            if (count < area.size())
                return static_cast<unsigned char>(area[count]);
            c = guarded([](std::streambuf& exhausted) { return exhausted.sgetc(); });
        }
        setState(std::ios_base::eofbit);
        return END;
    }

    std::istream& in_;
};

/// Equal apart from the case of ASCII letters.
inline bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    auto const lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char x, char y) { return lower(x) == lower(y); });
}

} // namespace Zorvan::AttributeContainer
