// SPDX-License-Identifier: MIT
#include "serialization/ValueReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>
#include <type_traits>

namespace Zorvan::AttributeContainer {

template <class Reader>
template <class Use>
void ValueReader<Reader>::withWord(Use use) {
    if constexpr (std::is_same_v<Reader, AreaReader>) {
        in_.skipSpace();
        bool const xml = format_ == ModelFormat::XmlV2;
        if (xml || in_.peek() != '"') {
            char const* const begin = in_.position();
            in_.skipWhile([xml](int c) { return !CharReader::isSpace(c) && !(xml && c == '"'); });
            use(std::string_view(begin, static_cast<std::size_t>(in_.position() - begin)));
            return;
        }
    }
    use(std::string_view(readValueWord(in_, format_)));
}

template <class Reader>
void ValueReader<Reader>::read(bool& value) {
    withWord([&value](std::string_view word) { value = equalsIgnoringCase(word, "true"); });
}

// What follows the digits in the word has no meaning, and is lost: the number stands, but the value did not
// parse.
template <class Reader>
template <class T>
T ValueReader<Reader>::readSmall() {
    int number = 0;
    bool good = false;
    withWord([&](std::string_view word) {
        IntegerParser parser;
        auto const rest =
            std::find_if_not(word.begin(), word.end(), [&parser](char c) { return parser.accept(c); });
        good = parser.hasDigits() && rest == word.end();
        number = parser.hasDigits() ? parser.value<int>(good) : 0;
    });
    int const nearest = std::clamp<int>(number, std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
    if (!good || nearest != number)
        in_.setState(std::ios_base::failbit);
    return static_cast<T>(nearest);
}

template <class Reader>
void ValueReader<Reader>::read(signed char& value) {
    value = readSmall<signed char>();
}
template <class Reader>
void ValueReader<Reader>::read(unsigned char& value) {
    value = readSmall<unsigned char>();
}

template <class Reader>
void ValueReader<Reader>::read(uuids::uuid& value) {
    std::optional<uuids::uuid> parsed;
    withWord([&parsed](std::string_view word) { parsed = uuids::uuid::fromString(word); });
    if (parsed)
        value = *parsed;
    else
        in_.setState(std::ios_base::failbit);
}

template <class Reader>
void ValueReader<Reader>::read(Vec4d<unsigned char>& value) {
    for (unsigned char& byte : value) {
        in_.skipSpace();
        if (int const c = in_.get(); c != CharReader::END)
            byte = static_cast<unsigned char>(c);
    }
}

template <class Reader>
void ValueReader<Reader>::read(ScanPtColor<Vec3d<float>>& value) {
    constexpr double MOST = std::numeric_limits<float>::max();
    Vec3d<float> point;
    for (float& coordinate : point) {
        auto const number = readFloat<double>(in_);
        coordinate = static_cast<float>(std::isinf(number) ? number : std::clamp(number, -MOST, MOST));
    }
    ScanPtColor<Vec3d<float>>::Color color{};
    for (std::uint8_t& component : color) {
        auto const number = readInteger<int>(in_);
        component = static_cast<std::uint8_t>(std::clamp(number, 0, 255));
        if (component != number)
            in_.setState(std::ios_base::failbit);
    }
    value = ScanPtColor<Vec3d<float>>(point, color);
}

template <class Reader>
void ValueReader<Reader>::readStatistic(std::array<double, 4>& values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0)
            skipCharacter();
        read(values[i]);
    }
}

template <class Reader>
void ValueReader<Reader>::read(StatisticVal<double>& value) {
    readToken(in_);
    readStatistic(value.values);
}

template <class Reader>
void ValueReader<Reader>::read(StatisticValLimits<double>& value) {
    std::string const kind = readToken(in_);
    readStatistic(value.values);
    readToken(in_);
    if (kind == "StatisticValLimitsEx") {
        skipCharacter();
        read(value.limits[0]);
        skipCharacter();
        read(value.limits[1]);
        skipCharacter();
        skipCharacter();
        read(value.limits[2]);
        skipCharacter();
        read(value.limits[3]);
        skipCharacter();
    } else if (kind == "StatisticValLimits") {
        skipCharacter();
        read(value.limits[0].x());
        skipCharacter();
        read(value.limits[0].y());
        value.limits[1] = value.limits[0];
        skipCharacter();
        skipCharacter();
        read(value.limits[2]);
        value.limits[3] = value.limits[2];
        skipCharacter();
    }
}

template <class Reader>
void ValueReader<Reader>::read(Time& value) {
    std::array<int, 6> fields{}; // day, month, year, hour, minute, second
    for (std::size_t i = 0; i < fields.size(); ++i) {
        constexpr std::size_t YEAR = 2;
        if (i > 0 && i != YEAR + 1)
            skipCharacter();
        read(fields[i]);
    }
    if (!in_.failed())
        value = Time(fields[2], fields[1], fields[0], fields[3], fields[4], fields[5]);
}

template <class Reader>
void ValueReader<Reader>::read(VersionNum& value) {
    bool const comment = format_ == ModelFormat::XmlV2;
    if (comment)
        skipComment();
    else if (!atQuote(in_, format_))
        return;
    read(value.name);
    bool isGood = false;
    if constexpr (std::is_same_v<Reader, CharReader>)
        isGood = value.setVersionNumbersFrom(in_.stream());
    if (!isGood)
        in_.setState(std::ios_base::failbit);
    if (comment && in_.skipWhile([](int c) { return c != '\n'; }) != CharReader::END)
        in_.get();
}

template <class Reader>
void ValueReader<Reader>::read(std::map<std::string, std::string>& value) {
    value.clear();
    for (std::uint64_t left = readCount(); left > 0 && atListedString(); --left) {
        std::string key = readQuoted(in_, format_);
        if (in_.get() != '=' || in_.get() != '>' || !atListedString()) {
            in_.setState(std::ios_base::failbit);
            return;
        }
        value.insert_or_assign(std::move(key), readQuoted(in_, format_));
    }
}

template <class Reader>
void ValueReader<Reader>::read(std::vector<std::string>& value) {
    value.clear();
    if (in_.peek() == '{') {
        readWords(value);
        return;
    }
    for (std::uint64_t left = readCount(); left > 0 && atListedString(); --left)
        value.push_back(readQuoted(in_, format_));
}

template <class Reader>
void ValueReader<Reader>::read(std::set<std::string>& value) {
    std::vector<std::string> texts;
    read(texts);
    value.clear();
    for (std::string& text : texts)
        value.insert(value.end(), std::move(text));
}

// "{", words without quotes, and a word that is "}".
template <class Reader>
void ValueReader<Reader>::readWords(std::vector<std::string>& value) {
    in_.get();
    while (true) {
        in_.skipSpace();
        if (atEndOfAttribute())
            return;
        std::string word;
        in_.readWhile(word, [xml = format_ == ModelFormat::XmlV2](int c) {
            return !CharReader::isSpace(c) && !(xml && c == '"');
        });
        if (word == "}" || in_.failed())
            return;
        value.push_back(std::move(word));
    }
}

/// Whether one more string of a counted list follows. The count is a claim only; that it is not kept is a
/// failure.
template <class Reader>
bool ValueReader<Reader>::atListedString() {
    if (atQuote(in_, format_))
        return true;
    in_.setState(std::ios_base::failbit);
    return false;
}

template <class Reader>
bool ValueReader<Reader>::atEndOfAttribute() {
    return format_ == ModelFormat::XmlV2 && in_.good() && in_.peek() == '"';
}

/// At the closing brace, which is consumed, at the end of the attribute, or where nothing can follow.
template <class Reader>
bool ValueReader<Reader>::endOfCollection() {
    in_.skipSpace();
    int const c = in_.peek();
    if (c == CharReader::END) {
        in_.setState(std::ios_base::failbit);
        return true;
    }
    if (c == '}')
        in_.get();
    return c == '}' || (format_ == ModelFormat::XmlV2 && c == '"');
}

/// The number of entries that a list claims to have; an attribute without a text is an empty list.
template <class Reader>
std::uint64_t ValueReader<Reader>::readCount() {
    in_.skipSpace();
    return atEndOfAttribute() ? 0 : readInteger<std::uint64_t>(in_);
}

template <class Reader>
void ValueReader<Reader>::skipCharacter() {
    in_.skipSpace();
    in_.get();
}

/// The four characters that open a comment.
template <class Reader>
void ValueReader<Reader>::skipComment() {
    in_.skipSpace();
    for (int i = 0; i < 4; ++i)
        in_.get();
}

template class ValueReader<CharReader>;
template class ValueReader<AreaReader>;

} // namespace Zorvan::AttributeContainer
