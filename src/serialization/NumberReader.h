// SPDX-License-Identifier: MIT
#pragma once

#include "serialization/AreaReader.h"
#include "serialization/CharReader.h"

#include <cstdint>
#include <limits>
#include <type_traits>

namespace Zorvan::AttributeContainer {

/// A decimal integer while its characters arrive one by one: an optional sign, then digits.
class IntegerParser {
public:
    /// Takes the next character; false when it does not belong to the number.
    bool accept(int c) {
        if (c >= '0' && c <= '9') {
            addDigit(static_cast<unsigned>(c - '0'));
            return true;
        }
        if ((c != '-' && c != '+') || started_)
            return false;
        started_ = true;
        negative_ = c == '-';
        return true;
    }

    bool hasDigits() const { return hasDigits_; }

    /// The number as a `T`; one out of range becomes the nearest limit and clears `fits`. An unsigned type
    /// takes a minus sign as streams do, and wraps.
    template <class T>
    T value(bool& fits) const {
        constexpr auto MAX = static_cast<std::uint64_t>(std::numeric_limits<T>::max());
        if constexpr (std::is_signed_v<T>) {
            std::uint64_t const limit = negative_ ? MAX + 1 : MAX;
            if (overflow_ || magnitude_ > limit) {
                fits = false;
                return negative_ ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
            }
        } else if (overflow_ || magnitude_ > MAX) {
            fits = false;
            return std::numeric_limits<T>::max();
        }
        return static_cast<T>(negative_ ? std::uint64_t{0} - magnitude_ : magnitude_);
    }

private:
    void addDigit(unsigned digit) {
        constexpr std::uint64_t MAX = std::numeric_limits<std::uint64_t>::max();
        started_ = hasDigits_ = true;
        if (magnitude_ > (MAX - digit) / 10)
            overflow_ = true;
        else
            magnitude_ = magnitude_ * 10 + digit;
    }

    std::uint64_t magnitude_ = 0;
    bool started_ = false;
    bool hasDigits_ = false;
    bool negative_ = false;
    bool overflow_ = false;
};

/// A `Reader` is a CharReader or an AreaReader.
///
/// Reads an integer as the stream operator of its type does in the classic locale: no digits give 0 and a
/// failure, a number out of range gives the nearest limit and a failure.
template <class T, class Reader>
T readInteger(Reader& in) {
    in.skipSpace();
    IntegerParser parser;
    in.skipWhile([&parser](int c) { return parser.accept(c); });
    bool fits = parser.hasDigits();
    T const value = parser.hasDigits() ? parser.value<T>(fits) : T{0};
    if (!fits)
        in.setState(std::ios_base::failbit);
    return value;
}

/// Reads a floating-point number as the stream operator of its type does in the classic locale, except that a
/// number out of range is no failure (the largest finite value or zero stands) and that "1.#INF" gives
/// infinity.
template <class T, class Reader>
T readFloat(Reader& in);

} // namespace Zorvan::AttributeContainer
