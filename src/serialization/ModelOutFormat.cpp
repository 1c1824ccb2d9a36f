// SPDX-License-Identifier: MIT
#include <AttributeContainer/ModelOutFormat.h>

#include "serialization/FormatTexts.h"
#include "serialization/LineWriter.h"
#include "serialization/QuotedText.h"
#include "serialization/TextSink.h"
#include "serialization/ValueWriter.h"

#include <AttributeContainer/Version.h>

#include <ostream>
#include <string_view>

namespace Zorvan::AttributeContainer {

namespace {

void putVersion(LineWriter& line, VersionNum const& version, ModelFormat::Format format) {
    ValueWriter(line.sink(), format).put(version);
}

// A comment holds the title as it is. What a reader could not tell from a quoted title, or from the end of
// the comment, or would skip, is quoted.
bool mustQuoteInComment(std::string_view title) {
    constexpr std::string_view NOT_AT_THE_START = "'\" <\t\v\f";
    return title.empty() || NOT_AT_THE_START.find(title.front()) != std::string_view::npos ||
           title.find_first_of("\r\n") != std::string_view::npos ||
           title.find("--") != std::string_view::npos;
}

} // namespace

ModelOutFormat::ModelOutFormat(std::ostream& out) : out_(out) {}
ModelOutFormat::~ModelOutFormat() = default;

ModelOutFormat& ModelOutFormat::startBlock(std::string const& name) {
    LineWriter(out_, format_).startBlock(name).finish();
    if (isXml())
        blockNames_.push_back(name);
    return *this;
}

ModelOutFormat& ModelOutFormat::startBlock(std::string const& name, std::string const& attributes) {
    if (!isXml())
        return *this;
    LineWriter line(out_, format_);
    line.text("<").text(name).text(" ").text(attributes).text(">");
    if (format_ == ModelFormat::XmlV2)
        line.newline();
    line.finish();
    blockNames_.push_back(name);
    return *this;
}

ModelOutFormat& ModelOutFormat::startAttributeBlock(std::string const& typeName) {
    LineWriter(out_, format_).startAttributeBlock(typeName).finish();
    if (isXml())
        blockNames_.emplace_back("Attr");
    return *this;
}

ModelOutFormat& ModelOutFormat::startBlockWithSize(std::string const& name, std::uint64_t size,
                                                   bool sizeInName) {
    LineWriter line(out_, format_);
    if (isXml()) {
        line.text("<").text(name).text(" value=\"").number(size).text("\">").newline().finish();
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
    LineWriter(out_, format_).startValue(key).finish();
    return *this;
}

ModelOutFormat& ModelOutFormat::startValue(std::string const& key, std::string const& attributes) {
    if (isXml())
        LineWriter(out_, format_).text("<").text(key).text(" ").text(attributes).text(" value=\"").finish();
    return *this;
}

ModelOutFormat& ModelOutFormat::startValueAsString(std::string const& key) {
    LineWriter(out_, format_).startValueAsString(key).finish();
    return *this;
}

ModelOutFormat& ModelOutFormat::endValue() {
    if (isXml())
        LineWriter(out_, format_).endValue().finish();
    return *this;
}

ModelOutFormat& ModelOutFormat::endBlock() {
    if (!isXml())
        LineWriter(out_, format_).endBlock({}).finish();
    else if (!blockNames_.empty()) {
        LineWriter(out_, format_).endBlock(blockNames_.back()).finish();
        blockNames_.pop_back();
    }
    return *this;
}

ModelOutFormat& ModelOutFormat::writeHeader(std::string const& title) {
    out_.precision(USUAL_PRECISION);
    LineWriter line(out_, format_);
    if (!isXml()) {
        line.quoted(title).newline().finish();
        return *this;
    }
    line.text(FormatTexts::XML_HEADER).newline().text(FormatTexts::XML_V2_COMMENT).newline();
    line.text(FormatTexts::XML_START_COMMENT).quoted(title).text(FormatTexts::XML_END_COMMENT).newline();
    line.text(FormatTexts::XML_NEXT_ROOT).newline().text(FormatTexts::XML_ROOT_START_TAG).newline().finish();
    return *this;
}

ModelOutFormat& ModelOutFormat::writeHeader(std::string const& title, Version const& record,
                                            bool withRootModelVersion) {
    out_.precision(USUAL_PRECISION);
    LineWriter line(out_, format_);
    if (!isXml()) {
        line.quoted(title).newline();
        putVersion(line, *record.getFormatVersion(), format_);
        if (withRootModelVersion) {
            line.newline();
            putVersion(line, *record.getRootModelVersion(), format_);
        }
        line.finish();
        return *this;
    }
    line.text(FormatTexts::XML_HEADER).newline().text(FormatTexts::XML_V2_COMMENT).newline();
    line.text(FormatTexts::XML_START_COMMENT);
    if (mustQuoteInComment(title))
        line.quoted(title);
    else
        line.text(title);
    line.text(FormatTexts::XML_END_COMMENT).newline().text(FormatTexts::XML_NEXT_VERSION).newline();
    line.text(FormatTexts::XML_START_COMMENT);
    putVersion(line, *record.getFormatVersion(), format_);
    line.text(FormatTexts::XML_END_COMMENT)
        .newline()
        .text(FormatTexts::XML_ROOT_START_TAG)
        .newline()
        .finish();
    return *this;
}

ModelOutFormat& ModelOutFormat::writeFooter() {
    if (isXml())
        LineWriter(out_, format_).text(FormatTexts::XML_FOOTER).finish();
    return *this;
}

void ModelOutFormat::encodeXMLEntities(std::ostream& out, std::string const& text) {
    TextSink sink(out);
    appendWithEntities(sink, text);
    sink.finish();
}

} // namespace Zorvan::AttributeContainer
