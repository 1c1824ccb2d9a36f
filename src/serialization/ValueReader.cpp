// SPDX-License-Identifier: MIT
#include "serialization/ValueReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace Zorvan::AttributeContainer {

void ValueReader::read(bool& value) { value = equalsIgnoringCase(readValueWord(in_, format_), "true"); }

// What follows the digits in the word has no meaning, and is lost: the number stands, but the value did not
// parse.
template <class T>
T ValueReader::readSmall() {
    std::string const word = readValueWord(in_, format_);
    IntegerParser parser;
    auto const rest =
        std::find_if_not(word.begin(), word.end(), [&parser](char c) { return parser.accept(c); });
    bool good = parser.hasDigits() && rest == word.end();
    int const number = parser.hasDigits() ? parser.value<int>(good) : 0;
    int const nearest = std::clamp<int>(number, std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
    if (!good || nearest != number)
        in_.setState(std::ios_base::failbit);
    return static_cast<T>(nearest);
}

void ValueReader::read(signed char& value) { value = readSmall<signed char>(); }
void ValueReader::read(unsigned char& value) { value = readSmall<unsigned char>(); }

void ValueReader::read(uuids::uuid& value) {
    if (std::optional<uuids::uuid> const parsed = uuids::uuid::fromString(readValueWord(in_, format_)))
        value = *parsed;
    else
        in_.setState(std::ios_base::failbit);
}

void ValueReader::read(Vec4d<unsigned char>& value) {
    for (unsigned char& byte : value) {
        in_.skipSpace();
        if (int const c = in_.get(); c != CharReader::END)
            byte = static_cast<unsigned char>(c);
    }
}

void ValueReader::read(ScanPtColor<Vec3d<float>>& value) {
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

void ValueReader::readStatistic(std::array<double, 4>& values) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0)
            skipCharacter();
        read(values[i]);
    }
}

void ValueReader::read(StatisticVal<double>& value) {
    readToken(in_);
    readStatistic(value.values);
}

void ValueReader::read(StatisticValLimits<double>& value) {
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

void ValueReader::read(Time& value) {
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

void ValueReader::read(VersionNum& value) {
    bool const comment = format_ == ModelFormat::XmlV2;
    if (comment)
        skipComment();
    else if (!atQuote(in_, format_))
        return;
    read(value.name);
    if (!value.setVersionNumbersFrom(in_.stream()))
        in_.setState(std::ios_base::failbit);
    if (comment && in_.skipWhile([](int c) { return c != '\n'; }) != CharReader::END)
        in_.get();
}

void ValueReader::read(std::map<std::string, std::string>& value) {
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

void ValueReader::read(std::vector<std::string>& value) {
    value.clear();
    if (in_.peek() == '{') {
        readWords(value);
        return;
    }
    for (std::uint64_t left = readCount(); left > 0 && atListedString(); --left)
        value.push_back(readQuoted(in_, format_));
}

void ValueReader::read(std::set<std::string>& value) {
    std::vector<std::string> texts;
    read(texts);
    value.clear();
    for (std::string& text : texts)
        value.insert(value.end(), std::move(text));
}

// "{", words without quotes, and a word that is "}".
void ValueReader::readWords(std::vector<std::string>& value) {
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
bool ValueReader::atListedString() {
    if (atQuote(in_, format_))
        return true;
    in_.setState(std::ios_base::failbit);
    return false;
}

bool ValueReader::atEndOfAttribute() {
    return format_ == ModelFormat::XmlV2 && in_.good() && in_.peek() == '"';
}

/// At the closing brace, which is consumed, at the end of the attribute, or where nothing can follow.
bool ValueReader::endOfCollection() {
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
std::uint64_t ValueReader::readCount() {
    in_.skipSpace();
    return atEndOfAttribute() ? 0 : readInteger<std::uint64_t>(in_);
}

void ValueReader::skipCharacter() {
    in_.skipSpace();
    in_.get();
}

/// The four characters that open a comment.
void ValueReader::skipComment() {
    in_.skipSpace();
    for (int i = 0; i < 4; ++i)
        in_.get();
}

} // namespace Zorvan::AttributeContainer
