// SPDX-License-Identifier: MIT
#include "serialization/AttributeBlock.h"

#include "serialization/ModelInFormatAccess.h"
#include "serialization/QuotedText.h"
#include "serialization/StreamArea.h"

#include <istream>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::string_view END_TAG = "</Attr>";

std::string_view areaOf(std::istream& in) {
    return in.good() ? StreamArea::of(*in.rdbuf()) : std::string_view();
}

} // namespace

AttributeBlock::AttributeBlock(std::istream& in, ModelInFormat& imf, ModelFormat::Format format)
    : in_(in), imf_(imf), format_(format), area_(areaOf(in)), begin_(area_.position()), nameEnd_(begin_) {}

bool AttributeBlock::takeType(std::string_view& typeName) {
    if (!ModelInFormatAccess::betweenTags(imf_) || ModelInFormatAccess::isPropagated())
        return false;
    area_.skipSpace();
    if (!area_.take(isXml() ? "<Attr type=\"" : "Attr<"))
        return false;
    // No type that is known here has a longer name, or one with white space.
    constexpr std::size_t MOST_CHARACTERS = 64;
    std::string_view const front = area_.rest().substr(0, MOST_CHARACTERS);
    std::size_t const length = front.find(isXml() ? '"' : '>');
    if (length == std::string_view::npos)
        return false;
    typeName = front.substr(0, length);
    area_.setPosition(typeName.data() + length + 1);
    hasTakenType_ = isXml() || area_.atSpace();
    return hasTakenType_;
}

bool AttributeBlock::openAgain(std::string_view openedAs) {
    if (!ModelInFormatAccess::betweenTags(imf_) || ModelInFormatAccess::isPropagated() ||
        !area_.take(openedAs))
        return false;
    if (isXml() ? openValueXml() : openValueText())
        return true;
    area_ = AreaReader(areaOf(in_)); // What follows must not be taken for the beginning of a block.
    return false;
}

bool AttributeBlock::open(std::string& name) {
    if (!hasTakenType_ && ModelInFormatAccess::isPropagated())
        return false;
    if (isXml())
        return (hasTakenType_ || ModelInFormatAccess::insideTag(imf_)) && openXml(name);
    return format_ == ModelFormat::Text && openText(name);
}

// The white space that the writer puts is taken together with what stands beside it.

bool AttributeBlock::openText(std::string& name) {
    if (!area_.take(" { \nName ")) {
        area_.skipSpace();
        if (!area_.take("{"))
            return false;
        area_.skipSpace();
        if (!area_.takeWord("Name"))
            return false;
    }
    if (!atQuote(area_, format_))
        return false;
    readQuoted(area_, format_, name);
    nameEnd_ = area_.position();
    return openValueText();
}

bool AttributeBlock::openValueText() {
    area_.take("\n");
    hasValue_ = area_.takeWord("Value");
    if (!hasValue_) {
        area_.skipSpace();
        hasValue_ = area_.takeWord("Value");
    }
    return area_.good() && (hasValue_ || area_.take("}"));
}

bool AttributeBlock::openXml(std::string& name) {
    if (!area_.take(">\n<Name value=\"")) {
        area_.skipSpace();
        if (!area_.take(">"))
            return false;
        area_.skipSpace();
        if (!area_.take("<Name value=\""))
            return false;
    }
    if (!atQuote(area_, format_))
        return false;
    readQuoted(area_, format_, name);
    nameEnd_ = area_.position();
    return openValueXml();
}

bool AttributeBlock::openValueXml() {
    if (!closeElement())
        return false;
    hasValue_ = area_.take("<Value value=\"");
    return hasValue_ || area_.take(END_TAG);
}

/// Behind the value of an element that holds nothing else, and on to the next tag.
bool AttributeBlock::closeElement() {
    if (!area_.take("\" />\n")) {
        area_.skipSpace();
        if (!area_.take("\""))
            return false;
        area_.skipSpace();
        if (!area_.take("/>"))
            return false;
    }
    area_.skipSpace();
    return area_.good();
}

bool AttributeBlock::closeValue() {
    if (isXml())
        return closeElement() && area_.take(END_TAG);
    if (area_.take("\n}"))
        return true;
    area_.skipSpace();
    return area_.take("}");
}

void AttributeBlock::commit() {
    StreamArea::consume(*in_.rdbuf(), static_cast<std::size_t>(area_.position() - begin_));
    ModelInFormatAccess::setBlockEnd(imf_, isXml() ? END_TAG : std::string_view());
}

} // namespace Zorvan::AttributeContainer
