// SPDX-License-Identifier: MIT
#include "serialization/FloatText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::array<std::uint64_t, 17> POWERS_OF_TEN = [] {
    std::array<std::uint64_t, 17> powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = 10 * powers[i - 1];
    return powers;
}();

/// The pairs of digits "00" to "99".
constexpr std::array<char, 200> DIGIT_PAIRS = [] {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i)
        pairs[i] = static_cast<char>('0' + (i % 2 == 0 ? i / 20 : i / 2 % 10));
    return pairs;
}();

/// Values below it are handled by integers.
constexpr double USUAL_LIMIT = 1e15;

/// The number of decimal digits of an integer below the limit; 0 has none.
std::size_t numDigits(std::uint64_t value) {
    std::size_t digits = 0;
    while (value >= POWERS_OF_TEN[digits])
        ++digits;
    return digits;
}

// The logarithm is taken in the precision of the value: near powers of ten, where it may be rounded to an
// integer, the result depends on that. Elsewhere the number of digits gives the same, and faster.
template <class T>
int digitsFor(T value) {
    constexpr double NEAR = sizeof(T) == sizeof(float) ? 1e-4 : 1e-12;
    T const magnitude = std::abs(value);
    if (magnitude == T{0})
        return 1;
    if (magnitude < T{1})
        return 8;
    if (auto const wide = static_cast<double>(magnitude); wide < USUAL_LIMIT) {
        std::size_t const digits = numDigits(static_cast<std::uint64_t>(wide));
        if (wide > static_cast<double>(POWERS_OF_TEN[digits - 1]) * (1 + NEAR) &&
            wide < static_cast<double>(POWERS_OF_TEN[digits]) * (1 - NEAR))
            return static_cast<int>(digits) + 9;
    }
    return static_cast<int>(std::ceil(std::log10(magnitude))) + 9;
}

/// The nearest integer to `mantissa * power / 2^shift`, the even one of two that are as near. The shift is 1
/// to 63, the product may have up to 128 bits.
std::uint64_t scaled(std::uint64_t mantissa, std::uint64_t power, unsigned shift) {
    constexpr std::uint64_t LOW_HALF = 0xFFFFFFFFU;
    std::uint64_t const low = (mantissa & LOW_HALF) * (power & LOW_HALF);
    std::uint64_t const middle = (mantissa >> 32U) * (power & LOW_HALF) + (low >> 32U);
    std::uint64_t const other = (mantissa & LOW_HALF) * (power >> 32U) + (middle & LOW_HALF);
    std::uint64_t const upper = (mantissa >> 32U) * (power >> 32U) + (middle >> 32U) + (other >> 32U);
    std::uint64_t const lower = other << 32U | (low & LOW_HALF);
    std::uint64_t const result = upper << (64U - shift) | lower >> shift;
    std::uint64_t const half = std::uint64_t{1} << (shift - 1);
    std::uint64_t const rest = lower & (2 * half - 1);
    return result + (rest > half || (rest == half && result % 2 != 0) ? 1 : 0);
}

/// Puts eight digits, the first ones possibly zeros, and gives their end.
char* putEightDigits(char* to, std::uint32_t number) {
    std::uint32_t const high = number / 10000;
    std::uint32_t const low = number % 10000;
    // One by one: a list of the pairs would go through memory.
    auto const put = [&to](std::uint32_t pair) {
        std::memcpy(to, &DIGIT_PAIRS[std::size_t{2} * pair], 2);
        to += 2;
    };
    put(high / 100);
    put(high % 100);
    put(low / 100);
    put(low % 100);
    return to;
}

/// A point and the decimals of `fraction / 10^numDecimals`, as far as they are not zeros at the end.
char* putDecimals(char* to, std::uint64_t fraction, std::size_t numDecimals) {
    constexpr std::uint64_t EIGHT_DIGITS = 100'000'000;
    *to++ = '.';
    fraction *= POWERS_OF_TEN[16 - numDecimals];
    to = putEightDigits(to, static_cast<std::uint32_t>(fraction / EIGHT_DIGITS));
    if (auto const rest = static_cast<std::uint32_t>(fraction % EIGHT_DIGITS))
        to = putEightDigits(to, rest);
    while (to[-1] == '0')
        --to;
    return to;
}

/// Puts a value of everyday size by exact integer arithmetic, several times faster than the library does, and
/// with the same result. Null when the value, its precision or its rounding is none of the usual ones.
char* putUsual(char* to, double value, int precision) {
    constexpr double LEAST = 0.001;
    double const magnitude = std::abs(value);
    if (!(magnitude >= LEAST && magnitude < USUAL_LIMIT))
        return nullptr;
    auto whole = static_cast<std::uint64_t>(magnitude);
    auto const digits = static_cast<int>(numDigits(whole));
    if (digits > precision)
        return nullptr;
    if (value < 0)
        *to++ = '-';
    constexpr std::size_t ROOM = 20;
    if (static_cast<double>(whole) == magnitude)
        return std::to_chars(to, to + ROOM, whole).ptr;
    // Zeros between the point and the first digit do not count.
    int const decimals = precision - digits + (magnitude >= 0.1 ? 0 : magnitude >= 0.01 ? 1 : 2);
    if (decimals > 16)
        return nullptr;
    std::uint64_t const unit = POWERS_OF_TEN[static_cast<std::size_t>(decimals)];
    auto const bits = std::bit_cast<std::uint64_t>(magnitude);
    std::uint64_t const implied = std::uint64_t{1} << 52U;
    std::uint64_t const number =
        scaled((bits & (implied - 1)) | implied, unit, 1075U - static_cast<unsigned>(bits >> 52U));
    std::uint64_t fraction = number - whole * unit;
    if (fraction >= unit) { // rounded up
        fraction = 0;
        if (static_cast<int>(numDigits(++whole)) > precision)
            return nullptr;
    }
    *to = '0';
    to = whole == 0 ? to + 1 : std::to_chars(to, to + ROOM, whole).ptr;
    return fraction == 0 ? to : putDecimals(to, fraction, static_cast<std::size_t>(decimals));
}

// Not put in place: digits that are dropped would stand in what follows in the stream, which may have been
// written before.
void append(TextSink& sink, double value, int precision) {
    // 317 digits for the largest double, or its neighbour in one value in scientific notation, fit with room
    // to spare.
    constexpr int MOST_DIGITS = 400;
    char text[MOST_DIGITS + 112];
    precision = std::clamp(precision, 1, MOST_DIGITS);
    char const* end = putUsual(text, value, precision);
    if (!end)
        end = std::to_chars(text, std::end(text), value, std::chars_format::general, precision).ptr;
    sink.append(std::string_view(text, static_cast<std::size_t>(end - text)));
}

} // namespace

int precisionFor(float value) { return digitsFor(value); }
int precisionFor(double value) { return digitsFor(value); }

void appendFloat(TextSink& sink, float value, int precision) {
    append(sink, static_cast<double>(value), precision);
}
void appendFloat(TextSink& sink, double value, int precision) { append(sink, value, precision); }

} // namespace Zorvan::AttributeContainer
