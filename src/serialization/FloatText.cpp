// SPDX-License-Identifier: MIT
#include "serialization/FloatText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace Zorvan::AttributeContainer {

namespace {

template <class T>
T finite(T value) {
    return std::isfinite(value) ? value : T{0};
}

// The logarithm is taken in the precision of the value: near powers of ten the result depends on it.
template <class T>
int digitsFor(T value) {
    T const magnitude = std::abs(value);
    if (magnitude == T{0})
        return 1;
    if (magnitude < T{1})
        return 8;
    return static_cast<int>(std::ceil(std::log10(magnitude))) + 9;
}

// Integral values are common and much faster to print as integers; the result is the same as long as they
// have no more digits than were asked for. Negative zero keeps its sign and goes the long way.
template <class T>
bool appendIntegral(TextSink& sink, T value, int precision) {
    constexpr T LIMIT = T{1e15F};
    if (!(std::abs(value) < LIMIT) || value != std::trunc(value) || (value == T{0} && std::signbit(value)))
        return false;
    char digits[24];
    char const* const end =
        std::to_chars(digits, digits + sizeof digits, static_cast<std::int64_t>(value)).ptr;
    if (end - digits - (value < T{0} ? 1 : 0) > precision)
        return false;
    sink.append(std::string_view(digits, static_cast<std::size_t>(end - digits)));
    return true;
}

template <class T>
void append(TextSink& sink, T value, int precision) {
    if (appendIntegral(sink, value, precision))
        return;
    // 317 digits for the largest double, or its neighbour in one value in scientific notation, fit with room
    // to spare.
    constexpr int MOST_DIGITS = 400;
    char text[MOST_DIGITS + 112];
    auto const [end, error] = std::to_chars(text, text + sizeof text, value, std::chars_format::general,
                                            std::clamp(precision, 1, MOST_DIGITS));
    if (error == std::errc{})
        sink.append(std::string_view(text, static_cast<std::size_t>(end - text)));
}

} // namespace

float finiteOrZero(float value) { return finite(value); }
double finiteOrZero(double value) { return finite(value); }

int precisionFor(float value) { return digitsFor(value); }
int precisionFor(double value) { return digitsFor(value); }

void appendFloat(TextSink& sink, float value, int precision) { append(sink, value, precision); }
void appendFloat(TextSink& sink, double value, int precision) { append(sink, value, precision); }

} // namespace Zorvan::AttributeContainer
