// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ModelFormat.h>

#include <string>
#include <string_view>

namespace Zorvan::AttributeContainer {

class TextSink;

/// The character that encloses strings in a rendering.
constexpr char quoteOf(ModelFormat::Format format) { return format == ModelFormat::XmlV2 ? '\'' : '"'; }

/// Whether a rendering is one of the two XML ones.
constexpr bool isXml(ModelFormat::Format format) {
    return format == ModelFormat::Xml || format == ModelFormat::XmlV2;
}

/// The entity of a character that XML reserves; empty for any other.
constexpr std::string_view entityOf(char c) {
    switch (c) {
    case '"':
        return "&quot;";
    case '&':
        return "&amp;";
    case '\'':
        return "&apos;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    default:
        return {};
    }
}

/// Appends `text` with entities for the characters that XML reserves, except for those in `plain`.
void appendWithEntities(TextSink& out, std::string_view text);
void appendWithEntities(std::string& out, std::string_view text, std::string_view plain = {});

/// Appends a string value: a quote, the text, a quote. The text has backslash escapes for line ends, double
/// quotes, backslashes and bytes from 0x80 on, and in the XML renderings entities on top of them.
void appendQuoted(TextSink& out, std::string_view text, ModelFormat::Format format);
void appendQuoted(std::string& out, std::string_view text, ModelFormat::Format format);

/// Takes back the backslash escapes. A text with an escape that is not known, or is cut off, stays as it is.
void unescape(std::string& text);

/// Replaces the five entities. "&amp;lt;" becomes "&lt;" and no more; other ampersands stay.
void decodeEntities(std::string& text);

// A `Reader` is a CharReader or an AreaReader.

/// Reads a string value. When no opening quote comes next, the result is empty and nothing but white space is
/// consumed. A string that the end of the input cuts off is returned as far as it goes, and the stream fails.
/// In the `XmlV2` rendering a tag "<NAME ... '" gives its NAME, too, and leaves the stream before the
/// apostrophe.
template <class Reader>
void readQuoted(Reader& in, ModelFormat::Format format, std::string& text);
template <class Reader>
std::string readQuoted(Reader& in, ModelFormat::Format format) {
    std::string text;
    readQuoted(in, format, text);
    return text;
}

/// Skips white space and tells whether a quoted string comes next.
template <class Reader>
bool atQuote(Reader& in, ModelFormat::Format format);

/// Reads a word of the text rendering: up to white space, which stays, or what stands in double quotes, where
/// a backslash makes the next character an ordinary one. Empty, with the stream failed, at the end of the
/// input.
template <class Reader>
std::string readToken(Reader& in);

/// Reads the word that makes up a value or an element of one: a token, but in the `XmlV2` rendering
/// everything before a double quote or white space, both of which stay.
template <class Reader>
std::string readValueWord(Reader& in, ModelFormat::Format format);

} // namespace Zorvan::AttributeContainer
