// SPDX-License-Identifier: MIT
#include "serialization/QuotedText.h"

#include "serialization/AreaReader.h"
#include "serialization/CharReader.h"
#include "serialization/TextSink.h"

#include <array>
#include <cstddef>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::string_view RESERVED_IN_XML = "\"&'<>";

constexpr bool needsEscape(char c) {
    return c == '\n' || c == '\r' || c == '"' || c == '\\' || static_cast<unsigned char>(c) >= 0x80;
}

// The number of characters of the escape at the front of `text`, and the byte that it stands for. 0 when it
// is none.
std::size_t parseEscape(std::string_view text, char& byte) {
    if (text.size() < 2)
        return 0;
    switch (text[1]) {
    case '"':
    case '\\':
        byte = text[1];
        return 2;
    case 'n':
        byte = '\n';
        return 2;
    case 'r':
        byte = '\r';
        return 2;
    case 'u':
        break;
    default:
        return 0;
    }
    constexpr std::size_t LENGTH = 6;
    if (text.size() < LENGTH)
        return 0;
    unsigned number = 0;
    for (char const c : text.substr(2, LENGTH - 2)) {
        unsigned digit = 0;
        if (c >= '0' && c <= '9')
            digit = static_cast<unsigned>(c - '0');
        else if (c >= 'A' && c <= 'F')
            digit = static_cast<unsigned>(c - 'A') + 10;
        else if (c >= 'a' && c <= 'f')
            digit = static_cast<unsigned>(c - 'a') + 10;
        else
            return 0;
        number = number << 4U | digit;
    }
    byte = static_cast<char>(static_cast<unsigned char>(number & 0xFFU));
    return LENGTH;
}

// Rewrites `text` in place from `position` on; `parse(rest, byte)` gives the length of what becomes one byte,
// or 0.
template <class Parse>
void contract(std::string& text, std::size_t position, char mark, Parse parse) {
    std::size_t written = position;
    while (position < text.size()) {
        char byte = text[position];
        std::size_t length = 0;
        if (byte == mark)
            length = parse(std::string_view(text).substr(position), byte);
        text[written++] = byte;
        position += length == 0 ? 1 : length;
    }
    text.resize(written);
}

std::size_t parseEntity(std::string_view text, char& byte) {
    for (char const c : RESERVED_IN_XML) {
        std::string_view const entity = entityOf(c);
        if (text.substr(0, entity.size()) == entity) {
            byte = c;
            return entity.size();
        }
    }
    return 0;
}

// Up to the first double quote that an even number of backslashes precedes, without the escapes. The opening
// quote has been consumed; the closing one is consumed, too.
template <class Reader>
void readBackslashQuoted(Reader& in, std::string& text) {
    // All that stands before the first backslash is taken as a whole.
    int const next = in.readWhile(text, [](int c) { return c != '"' && c != '\\'; });
    if (next == '\\') {
        bool escaped = false;
        in.readWhile(text, [&escaped](int c) {
            if (c == '"' && !escaped)
                return false;
            escaped = c == '\\' && !escaped;
            return true;
        });
    }
    in.get();
    if (next == '\\')
        unescape(text);
}

/// What `quote` does not copy as it is, in the text rendering and in the others.
constexpr std::array<std::array<bool, 256>, 2> SPECIAL = [] {
    std::array<std::array<bool, 256>, 2> special{};
    for (std::size_t i = 0; i < 256; ++i) {
        special[0][i] = needsEscape(static_cast<char>(i));
        special[1][i] = special[0][i] || !entityOf(static_cast<char>(i)).empty();
    }
    return special;
}();

/// How many characters at the front of a text are copied as they are.
std::size_t numPlain(std::string_view text, std::array<bool, 256> const& special) {
    std::size_t length = 0;
    while (length < text.size() && !special[static_cast<unsigned char>(text[length])])
        ++length;
    return length;
}

// `Out` is a TextSink or a string.
template <class Out>
void encode(Out& out, std::string_view text, std::string_view plain) {
    std::size_t from = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::string_view const entity = entityOf(text[i]);
        if (entity.empty() || plain.find(text[i]) != plain.npos)
            continue;
        out.append(text.substr(from, i - from)).append(entity);
        from = i + 1;
    }
    out.append(text.substr(from));
}

template <class Out>
void quote(Out& out, std::string_view text, ModelFormat::Format format) {
    constexpr std::string_view HEX = "0123456789ABCDEF";
    bool const xml = isXml(format);
    auto const& special = SPECIAL[xml ? 1 : 0];
    char const mark = quoteOf(format);
    out.append(std::string_view(&mark, 1));
    std::size_t from = 0;
    while (true) {
        std::size_t const i = from + numPlain(text.substr(from), special);
        if (i == text.size())
            break;
        auto const byte = static_cast<unsigned char>(text[i]);
        std::string_view const entity = xml ? entityOf(text[i]) : std::string_view();
        out.append(text.substr(from, i - from));
        from = i + 1;
        if (needsEscape(text[i]))
            out.append("\\");
        // A byte from 0x80 on is written as a 16-bit number with its sign extended.
        if (byte >= 0x80)
            out.append("uFF").append(HEX.substr(byte >> 4U, 1)).append(HEX.substr(byte & 0xFU, 1));
        else if (!entity.empty())
            out.append(entity);
        else
            out.append(text[i] == '\n' ? "n" : text[i] == '\r' ? "r" : text.substr(i, 1));
    }
    out.append(text.substr(from)).append(std::string_view(&mark, 1));
}

} // namespace

void appendWithEntities(TextSink& out, std::string_view text) { encode(out, text, {}); }

void appendWithEntities(std::string& out, std::string_view text, std::string_view plain) {
    encode(out, text, plain);
}

void appendQuoted(TextSink& out, std::string_view text, ModelFormat::Format format) {
    // Most texts are names that go through as they are.
    if (numPlain(text, SPECIAL[isXml(format) ? 1 : 0]) < text.size() ||
        !out.appendBetween(quoteOf(format), text))
        quote(out, text, format);
}

void appendQuoted(std::string& out, std::string_view text, ModelFormat::Format format) {
    quote(out, text, format);
}

void unescape(std::string& text) {
    std::size_t const first = text.find('\\');
    if (first == std::string::npos)
        return;
    for (std::size_t at = first; at != std::string::npos;) {
        char byte = 0;
        std::size_t const length = parseEscape(std::string_view(text).substr(at), byte);
        if (length == 0)
            return;
        at = text.find('\\', at + length);
    }
    contract(text, first, '\\', parseEscape);
}

void decodeEntities(std::string& text) {
    std::size_t const first = text.find('&');
    if (first != std::string::npos)
        contract(text, first, '&', parseEntity);
}

template <class Reader>
bool atQuote(Reader& in, ModelFormat::Format format) {
    in.skipSpace();
    return in.good() && in.peek() == quoteOf(format);
}

template <class Reader>
void readQuoted(Reader& in, ModelFormat::Format format, std::string& text) {
    text.clear();
    in.skipSpace();
    int const first = in.peek();
    if (first == CharReader::END) {
        in.setState(std::ios_base::failbit);
        return;
    }
    if (first == quoteOf(format)) {
        in.get();
        if (format != ModelFormat::XmlV2) {
            readBackslashQuoted(in, text);
            return;
        }
        in.readWhile(text, [](int c) { return c != '\''; });
        in.get();
    } else if (format == ModelFormat::XmlV2 && first == '<') {
        in.get();
        in.readWhile(text, [](int c) { return c != ' '; });
        if (in.skipWhile([](int c) { return c != '\''; }) == CharReader::END)
            in.setState(std::ios_base::failbit);
    }
    if (format == ModelFormat::XmlV2)
        decodeEntities(text);
    unescape(text);
}

template <class Reader>
std::string readToken(Reader& in) {
    std::string token;
    in.skipSpace();
    if (in.peek() == CharReader::END) {
        in.setState(std::ios_base::failbit);
        return token;
    }
    if (in.peek() != '"') {
        in.readWhile(token, [](int c) { return !CharReader::isSpace(c); });
        return token;
    }
    in.get();
    int c = in.get();
    for (; c != CharReader::END && c != '"'; c = in.get()) {
        if (c == '\\')
            c = in.get();
        if (c == CharReader::END)
            break;
        token.push_back(static_cast<char>(c));
    }
    return token;
}

template <class Reader>
std::string readValueWord(Reader& in, ModelFormat::Format format) {
    if (format != ModelFormat::XmlV2)
        return readToken(in);
    std::string word;
    in.skipSpace();
    in.readWhile(word, [](int c) { return c != '"' && !CharReader::isSpace(c); });
    return word;
}

template void readQuoted(CharReader& in, ModelFormat::Format format, std::string& text);
template bool atQuote(CharReader& in, ModelFormat::Format format);
template std::string readToken(CharReader& in);
template std::string readValueWord(CharReader& in, ModelFormat::Format format);
template void readQuoted(AreaReader& in, ModelFormat::Format format, std::string& text);
template bool atQuote(AreaReader& in, ModelFormat::Format format);
template std::string readToken(AreaReader& in);
template std::string readValueWord(AreaReader& in, ModelFormat::Format format);

} // namespace Zorvan::AttributeContainer
