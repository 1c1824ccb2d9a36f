// SPDX-License-Identifier: MIT
#include "serialization/NumberReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace Zorvan::AttributeContainer {

namespace {

/// Collects the characters that may belong to a floating-point number. Leading zeros count as one, so that
/// only digits that matter are kept.
class FloatCollector {
public:
    bool accept(int c) {
        if (c >= '0' && c <= '9')
            return acceptDigit(static_cast<char>(c));
        if (c == '.' && !hasPoint_ && !hasExponent_) {
            hasPoint_ = true;
            return add('.');
        }
        if ((c == 'e' || c == 'E') && !hasExponent_ && hasMantissa_) {
            hasExponent_ = true;
            add('e');
            expectSign_ = true;
            return true;
        }
        if ((c == '+' || c == '-') && expectSign_)
            return c == '+' ? skipPlus() : add('-');
        return false;
    }

    template <class T>
    bool parse(T& value) const {
        std::string_view const digits = text();
        char const* const end = digits.data() + digits.size();
        auto const [rest, error] = std::from_chars(digits.data(), end, value);
        if (rest != end || error == std::errc::invalid_argument)
            return false;
        if (error == std::errc::result_out_of_range || !std::isfinite(value)) {
            T const limit = isLarge(digits) ? std::numeric_limits<T>::max() : T{0};
            value = digits.front() == '-' ? -limit : limit;
        }
        return true;
    }

private:
    static constexpr std::size_t SHORT = 64;

    bool acceptDigit(char c) {
        bool const leadingZero = c == '0' && onlyZeros_ && !hasPoint_ && !hasExponent_;
        bool const repeated = leadingZero && hasMantissa_;
        if (!leadingZero)
            onlyZeros_ = false;
        hasMantissa_ = true;
        expectSign_ = false;
        return repeated || add(c);
    }

    bool add(char c) {
        expectSign_ = false;
        if (size_ < SHORT)
            short_[size_++] = c;
        else {
            if (long_.empty())
                long_.assign(short_, size_);
            long_.push_back(c);
        }
        return true;
    }

    // std::from_chars knows no plus sign.
    bool skipPlus() {
        expectSign_ = false;
        return true;
    }

    std::string_view text() const { return long_.empty() ? std::string_view(short_, size_) : long_; }

    // Whether a number that is out of range is too large, not too small: the decimal position of its first
    // significant digit tells.
    static bool isLarge(std::string_view digits) {
        std::size_t const mark = digits.find('e');
        std::string_view const mantissa = digits.substr(0, mark);
        std::size_t const first = mantissa.find_first_of("123456789");
        if (first == std::string_view::npos)
            return false;
        std::size_t const point = std::min(mantissa.find('.'), mantissa.size());
        long long position = static_cast<long long>(point) - static_cast<long long>(first);
        if (mark != std::string_view::npos) {
            IntegerParser exponent;
            for (char const c : digits.substr(mark + 1))
                exponent.accept(c);
            bool fits = true;
            position += exponent.value<std::int32_t>(fits);
        }
        return position > 0;
    }

    char short_[SHORT];
    std::size_t size_ = 0;
    std::string long_;
    bool hasMantissa_ = false;
    bool onlyZeros_ = true;
    bool hasPoint_ = false;
    bool hasExponent_ = false;
    bool expectSign_ = true; // at the start and right behind the exponent mark
};

/// Behind a 1 or -1: consumes "#INF" in any case; gives back what it took when something else stands there.
template <class Reader>
bool consumeInfinityMark(Reader& in) {
    constexpr std::string_view MARK = "#INF";
    char taken[MARK.size()];
    std::size_t count = 0;
    while (count < MARK.size()) {
        int const c = in.peek();
        int const upper = c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c;
        if (upper != MARK[count])
            break;
        taken[count++] = static_cast<char>(in.get());
    }
    if (count == MARK.size())
        return true;
    while (count > 0)
        in.putBack(static_cast<unsigned char>(taken[--count]));
    return false;
}

/// A decimal number of a few digits without an exponent: digits and power of ten are exact, so that one
/// division rounds as it has to be. Null when it is another number, else its end.
char const* parseShortDecimal(std::string_view text, double& value) {
    constexpr std::array<double, 16> POWERS_OF_TEN = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                      1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    constexpr std::ptrdiff_t MOST_DIGITS = 15;
    char const* position = text.data();
    char const* const end = position + text.size();
    bool const isNegative = position != end && *position == '-';
    position += isNegative ? 1 : 0;
    std::uint64_t number = 0;
    auto const takeDigits = [&] {
        char const* const begin = position;
        for (; position != end && *position >= '0' && *position <= '9'; ++position)
            number = 10 * number + static_cast<std::uint64_t>(*position - '0');
        return position - begin;
    };
    std::ptrdiff_t const numWhole = takeDigits();
    std::ptrdiff_t numDecimals = 0;
    if (position != end && *position == '.') {
        ++position;
        numDecimals = takeDigits();
        if (numDecimals == 0)
            return nullptr;
    }
    if (numWhole == 0 || numWhole > MOST_DIGITS || numDecimals > MOST_DIGITS - numWhole)
        return nullptr;
    double const magnitude =
        static_cast<double>(number) / POWERS_OF_TEN[static_cast<std::size_t>(numDecimals)];
    value = isNegative ? -magnitude : magnitude;
    return position;
}

/// A number that is written plainly, as nearly all are. False: it has to be looked at character by character.
template <class T>
bool takePlainFloat(AreaReader& in, T& value) {
    std::string_view const text = in.rest();
    auto const isEnd = [&text](char const* end) {
        if (end == text.data() + text.size())
            return false;
        char const c = *end;
        bool const goesOn =
            (c >= '0' && c <= '9') || c == '.' || c == 'e' || c == 'E' || c == '+' || c == '-' || c == '#';
        return !goesOn;
    };
    if constexpr (std::is_same_v<T, double>)
        if (char const* const end = parseShortDecimal(text, value); end && isEnd(end)) {
            in.setPosition(end);
            return true;
        }
    std::size_t const sign = text.starts_with('-') ? 1 : 0;
    if (text.size() <= sign || text[sign] < '0' || text[sign] > '9')
        return false;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || !isEnd(end))
        return false;
    in.setPosition(end);
    return true;
}

} // namespace

template <class T, class Reader>
T readFloat(Reader& in) {
    in.skipSpace();
    if constexpr (std::is_same_v<Reader, AreaReader>)
        if (T plain{0}; takePlainFloat(in, plain))
            return plain;
    FloatCollector collector;
    in.skipWhile([&collector](int c) { return collector.accept(c); });
    T value{0};
    if (!collector.parse(value)) {
        in.setState(std::ios_base::failbit);
        return T{0};
    }
    if ((value == T{1} || value == T{-1}) && in.good() && in.peek() == '#' && consumeInfinityMark(in))
        return std::copysign(std::numeric_limits<T>::infinity(), value);
    return value;
}

template float readFloat<float>(CharReader& in);
template double readFloat<double>(CharReader& in);
template float readFloat<float>(AreaReader& in);
template double readFloat<double>(AreaReader& in);

} // namespace Zorvan::AttributeContainer
