// SPDX-License-Identifier: MIT
#include <AttributeContainer/ModelOutFormat.h>

#include "serialization/FormatTexts.h"
#include "serialization/QuotedText.h"
#include "serialization/TextSink.h"
#include "serialization/ValueWriter.h"

#include <AttributeContainer/Version.h>

#include <ostream>
#include <string_view>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::streamsize USUAL_PRECISION = 8;

/// Text on its way to a stream; each line break flushes the stream.
class LineWriter {
public:
    explicit LineWriter(std::ostream& out) : sink_(out) {}

    LineWriter& text(std::string_view text) {
        sink_.append(text);
        return *this;
    }

    LineWriter& quoted(std::string_view text, ModelFormat::Format format) {
        appendQuoted(sink_, text, format);
        return *this;
    }

    LineWriter& number(std::uint64_t number) {
        sink_.appendInteger(number);
        return *this;
    }

    LineWriter& newline() {
        sink_.append('\n').finish();
        sink_.stream().flush();
        return *this;
    }

    void finish() { sink_.finish(); }

private:
    TextSink sink_;
};

void putVersion(std::ostream& out, VersionNum const& version, ModelFormat::Format format) {
    ValueWriter writer(out, format);
    writer.put(version);
    writer.finish();
}

// A comment holds the title as it is. What a reader could not tell from a quoted title, or from the end of
// the comment, or would skip, is quoted.
bool mustQuoteInComment(std::string_view title) {
    constexpr std::string_view NOT_AT_THE_START = "'\" <\t\v\f";
    return title.empty() || NOT_AT_THE_START.find(title.front()) != std::string_view::npos ||
           title.find_first_of("\r\n") != std::string_view::npos ||
           title.find("--") != std::string_view::npos;
}

// What the text rendering of a type name has between its outermost angle brackets.
std::string_view typeArgument(std::string_view typeName) {
    std::size_t const last = typeName.rfind('>');
    std::string_view const front = typeName.substr(0, last);
    std::size_t const first = front.rfind('<');
    return first == std::string_view::npos ? std::string_view() : front.substr(first + 1);
}

} // namespace

ModelOutFormat::ModelOutFormat(std::ostream& out) : out_(out) {}
ModelOutFormat::~ModelOutFormat() = default;

ModelOutFormat& ModelOutFormat::startBlock(std::string const& name) {
    LineWriter line(out_);
    if (isXml()) {
        line.text("<").text(name).text(">").newline();
        blockNames_.push_back(name);
    } else
        line.newline().text(name).text(" { ").finish();
    return *this;
}

ModelOutFormat& ModelOutFormat::startBlock(std::string const& name, std::string const& attributes) {
    if (!isXml())
        return *this;
    LineWriter line(out_);
    line.text("<").text(name).text(" ").text(attributes).text(">");
    if (format_ == ModelFormat::XmlV2)
        line.newline();
    line.finish();
    blockNames_.push_back(name);
    return *this;
}

ModelOutFormat& ModelOutFormat::startAttributeBlock(std::string const& typeName) {
    if (!isXml())
        return startBlock(typeName);
    LineWriter(out_).text("<Attr type=\"").text(typeArgument(typeName)).text("\">").newline();
    blockNames_.emplace_back("Attr");
    return *this;
}

ModelOutFormat& ModelOutFormat::startBlockWithSize(std::string const& name, std::uint64_t size,
                                                   bool sizeInName) {
    LineWriter line(out_);
    if (isXml()) {
        line.text("<").text(name).text(" value=\"").number(size).text("\">").newline();
        blockNames_.push_back(name);
        return *this;
    }
    line.newline().text(name);
    if (sizeInName)
        line.text(" ").number(size).text(" { ").finish();
    else
        line.text(" {  ").number(size).finish();
    return *this;
}

ModelOutFormat& ModelOutFormat::startValue(std::string const& key) {
    LineWriter line(out_);
    if (isXml())
        line.text("<").text(key).text(" value=\"").finish();
    else
        line.newline().text(key).text(" ").finish();
    return *this;
}

ModelOutFormat& ModelOutFormat::startValue(std::string const& key, std::string const& attributes) {
    if (isXml())
        LineWriter(out_).text("<").text(key).text(" ").text(attributes).text(" value=\"").finish();
    return *this;
}

ModelOutFormat& ModelOutFormat::startValueAsString(std::string const& key) {
    if (isXml())
        return startValue(key);
    out_.precision(USUAL_PRECISION);
    LineWriter(out_).newline().quoted(key, format_).text(" ").finish();
    return *this;
}

ModelOutFormat& ModelOutFormat::endValue() {
    if (isXml())
        LineWriter(out_).text("\" />").newline();
    return *this;
}

ModelOutFormat& ModelOutFormat::endBlock() {
    LineWriter line(out_);
    if (!isXml())
        line.newline().text("}").finish();
    else if (!blockNames_.empty()) {
        line.text("</").text(blockNames_.back()).text(">").newline();
        blockNames_.pop_back();
    }
    return *this;
}

ModelOutFormat& ModelOutFormat::writeHeader(std::string const& title) {
    out_.precision(USUAL_PRECISION);
    LineWriter line(out_);
    if (!isXml()) {
        line.quoted(title, format_).newline();
        return *this;
    }
    line.text(FormatTexts::XML_HEADER).newline().text(FormatTexts::XML_V2_COMMENT).newline();
    line.text(FormatTexts::XML_START_COMMENT)
        .quoted(title, format_)
        .text(FormatTexts::XML_END_COMMENT)
        .newline();
    line.text(FormatTexts::XML_NEXT_ROOT).newline().text(FormatTexts::XML_ROOT_START_TAG).newline();
    return *this;
}

ModelOutFormat& ModelOutFormat::writeHeader(std::string const& title, Version const& record,
                                            bool withRootModelVersion) {
    out_.precision(USUAL_PRECISION);
    LineWriter line(out_);
    if (!isXml()) {
        line.quoted(title, format_).newline();
        putVersion(out_, *record.getFormatVersion(), format_);
        if (withRootModelVersion) {
            line.newline();
            putVersion(out_, *record.getRootModelVersion(), format_);
        }
        return *this;
    }
    line.text(FormatTexts::XML_HEADER).newline().text(FormatTexts::XML_V2_COMMENT).newline();
    line.text(FormatTexts::XML_START_COMMENT);
    if (mustQuoteInComment(title))
        line.quoted(title, format_);
    else
        line.text(title);
    line.text(FormatTexts::XML_END_COMMENT).newline().text(FormatTexts::XML_NEXT_VERSION).newline();
    line.text(FormatTexts::XML_START_COMMENT).finish();
    putVersion(out_, *record.getFormatVersion(), format_);
    line.text(FormatTexts::XML_END_COMMENT).newline().text(FormatTexts::XML_ROOT_START_TAG).newline();
    return *this;
}

ModelOutFormat& ModelOutFormat::writeFooter() {
    if (isXml())
        LineWriter(out_).text(FormatTexts::XML_FOOTER).finish();
    return *this;
}

void ModelOutFormat::encodeXMLEntities(std::ostream& out, std::string const& text) {
    TextSink sink(out);
    appendWithEntities(sink, text);
    sink.finish();
}

} // namespace Zorvan::AttributeContainer
