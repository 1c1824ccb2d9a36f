// SPDX-License-Identifier: MIT
#include "serialization/FloatText.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace Zorvan::AttributeContainer {
namespace {

std::string byStream(double value, int precision) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out.precision(precision);
    out << value;
    return out.str();
}

template <class T>
std::string appended(T value, int precision) {
    std::ostringstream out;
    TextSink sink(out);
    appendFloat(sink, value, precision);
    sink.finish();
    return out.str();
}

/// Compares a value, its negative one and their neighbours, each with these precisions and with its own one.
template <class T>
void expectAsByStream(T middle, std::initializer_list<int> precisions) {
    if (testing::Test::HasFailure())
        return; // one difference says enough
    for (T const size : {std::nextafter(middle, T{0}), middle, std::nextafter(middle, T{1e38F})})
        for (T const value : {size, -size}) {
            int const own = value == T{0} ? 1 : size < T{1} ? 8 : 9 + int(std::ceil(std::log10(size)));
            ASSERT_EQ(precisionFor(value), own) << byStream(value, 17);
            ASSERT_EQ(appended(value, own), byStream(value, own));
            for (int const precision : precisions)
                ASSERT_EQ(appended(value, precision), byStream(value, precision)) << precision;
        }
}

template <class T, class Bits>
void expectEachExponentAsByStream() {
    constexpr int width = std::numeric_limits<T>::digits - 1;
    constexpr Bits one = 1, inside = (one << width) - 1;
    std::mt19937_64 random(20); // NOLINT: the same numbers in every run
    // The exponent 0 is that of zero and of the subnormal values.
    for (Bits exponent = 0; exponent < std::bit_cast<Bits>(std::numeric_limits<T>::infinity()) >> width;
         ++exponent)
        for (Bits const mantissa : {Bits{0}, inside, static_cast<Bits>(random()) & inside})
            expectAsByStream(std::bit_cast<T>(exponent << width | mantissa), {9, 17});
}

TEST(FloatText, EachExponentIsWrittenAsByAStream) {
    expectEachExponentAsByStream<double, std::uint64_t>();
    expectEachExponentAsByStream<float, std::uint32_t>();
}

TEST(FloatText, DecimalsOfEverydaySizeAreWrittenAsByAStream) {
    std::mt19937_64 random(21); // NOLINT: the same numbers in every run
    for (double unit = 1e-4; unit < 1e17; unit *= 10)
        for (double const digits : {1.0, 0.9999999, 0.99999999999999, 0.1 * double(random() % 100),
                                    1e-4 * double(random() % 100000)})
            for (int precision = 0; precision <= 20; ++precision) {
                expectAsByStream(digits * unit, {precision});
                expectAsByStream(static_cast<float>(digits * unit), {precision});
            }
}

TEST(FloatText, TiesAreRoundedToEven) {
    std::mt19937_64 random(22); // NOLINT: the same numbers in every run
    for (int i = 0; i < 20000; ++i) {
        // So many binary places are as many decimal ones, of which the last one, a 5, is cut off.
        int const places = 1 + i % 20;
        auto const number = static_cast<double>(random() >> (11 + i % 50) | 1U);
        double const value = std::ldexp(number, -places);
        expectAsByStream(value, {static_cast<int>(std::floor(std::log10(value))) + places});
    }
}

} // namespace
} // namespace Zorvan::AttributeContainer
