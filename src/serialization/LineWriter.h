// SPDX-License-Identifier: MIT
#pragma once

#include "serialization/QuotedText.h"
#include "serialization/TextSink.h"

#include <AttributeContainer/ModelFormat.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// The lines of a document on their way to a stream, several of them at a time; each line break flushes the
/// stream. The text is with the stream only after `finish`.
class LineWriter {
public:
    LineWriter(std::ostream& out, ModelFormat::Format format) noexcept
        : sink_(out), format_(format), isXml_(AttributeContainer::isXml(format)) {}

    LineWriter& text(std::string_view text) {
        sink_.append(text);
        return *this;
    }
    template <std::size_t Size>
    [[gnu::always_inline]] LineWriter& text(char const (&literal)[Size]) {
        sink_.append(literal);
        return *this;
    }
    LineWriter& quoted(std::string_view text) {
        appendQuoted(sink_, text, format_);
        return *this;
    }
    LineWriter& number(std::uint64_t number) {
        sink_.appendInteger(number);
        return *this;
    }
    LineWriter& newline() {
        sink_.newline();
        return *this;
    }
    void finish() { sink_.finish(); }
    /// Goes on after somebody else may have written to the stream behind what was finished.
    void resume() { sink_.resume(); }

    TextSink& sink() noexcept { return sink_; }
    std::ostream& stream() const noexcept { return sink_.stream(); }
    ModelFormat::Format format() const noexcept { return format_; }

    LineWriter& startBlock(std::string_view name) {
        return isXml_ ? text("<").text(name).text(">").newline() : newline().text(name).text(" { ");
    }
    /// `typeName` has the form "Attr<...>"; XML has what stands between the outermost angle brackets.
    LineWriter& startAttributeBlock(std::string_view typeName) {
        return isXml_ ? text("<Attr type=\"").text(typeArgument(typeName)).text("\">").newline()
                      : startBlock(typeName);
    }
    /// The same up to and with the name of the attribute.
    LineWriter& startAttributeBlock(std::string_view typeName, std::string_view name) {
        if (isXml_ || !sink_.keepsLines())
            startAttributeBlock(typeName).startValue("Name");
        else
            text("\n").text(typeName).text(" { \nName ");
        return quoted(name).endValue();
    }
    template <std::size_t Size>
    LineWriter& startValue(char const (&key)[Size]) {
        return isXml_ ? startValue(std::string_view(key)) : newline().text(key).text(" ");
    }
    LineWriter& startValue(std::string_view key) {
        return isXml_ ? text("<").text(key).text(" value=\"") : newline().text(key).text(" ");
    }
    /// The key is user data: quoted in the text rendering, raw in XML.
    LineWriter& startValueAsString(std::string_view key) {
        if (isXml_)
            return startValue(key);
        stream().precision(USUAL_PRECISION);
        return newline().quoted(key).text(" ");
    }
    LineWriter& endValue() { return isXml_ ? text("\" />").newline() : *this; }
    LineWriter& endAttributeBlock() {
        if (isXml_ || !sink_.keepsLines())
            return endBlock("Attr");
        return text("\n}");
    }
    /// `name`: of the element; the text rendering does not have it.
    LineWriter& endBlock(std::string_view name) {
        return isXml_ ? text("</").text(name).text(">").newline() : newline().text("}");
    }

private:
    static std::string_view typeArgument(std::string_view typeName) {
        std::size_t const last = typeName.rfind('>');
        std::string_view const front = typeName.substr(0, last);
        std::size_t const first = front.rfind('<');
        return first == std::string_view::npos ? std::string_view() : front.substr(first + 1);
    }

    TextSink sink_;
    ModelFormat::Format format_;
    bool isXml_;
};

} // namespace Zorvan::AttributeContainer
