// SPDX-License-Identifier: MIT
#include "serialization/NumberReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>

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

/// A number that is written plainly, as nearly all are. False: it has to be looked at character by character.
template <class T>
bool takePlainFloat(AreaReader& in, T& value) {
    std::string_view const text = in.rest();
    std::size_t const sign = text.starts_with('-') ? 1 : 0;
    if (text.size() <= sign || text[sign] < '0' || text[sign] > '9')
        return false;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end == text.data() + text.size() ||
        std::string_view("0123456789.eE+-#").find(*end) != std::string_view::npos)
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
