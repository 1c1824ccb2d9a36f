// SPDX-License-Identifier: MIT
#include "serialization/RawText.h"

#include "serialization/CharReader.h"
#include "serialization/FormatTexts.h"
#include "serialization/QuotedText.h"
#include "serialization/TextTokens.h"
#include "serialization/XmlName.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::string_view PRE_OBSERVER = "PreObserver";
constexpr std::string_view POST_OBSERVER = "PostObserver";
constexpr std::string_view OBSERVER_PATH = "ObserverPath";
constexpr std::string_view CHILD = "Child";
constexpr std::string_view SUB_CONTAINER = "SubContainer";
constexpr std::string_view VALUE = "Value";
constexpr std::string_view INSTANCE_ID = "InstanceID";
constexpr std::string_view REFERENCE_TO_SHARED = "ReferenceToShared";

bool isSpace(char c) { return CharReader::isSpace(static_cast<unsigned char>(c)); }
bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string quotedText(std::string_view text) {
    std::string quoted;
    appendQuoted(quoted, text, ModelFormat::Text);
    return quoted;
}

std::string decoded(std::string_view text) {
    std::string result(text);
    decodeEntities(result);
    return result;
}

// Text to XML

class TextToXml {
public:
    explicit TextToXml(std::string_view text) : text_(text), tokens_(splitText(text, TextLevel::Top)) {}

    std::optional<std::string> translate();

private:
    struct Element {
        std::string name;
        std::string_view wrapper; // an element around this one, that a text has no block for
        bool takesClass;          // the first line names a class
        bool hasContent;          // text stands before its next entry
    };

    void entry();
    void line(TextToken const& key, std::size_t last);
    void block(TextToken const& key, std::size_t open);
    void content(std::size_t begin, std::size_t end);
    void closeElement();
    bool nameOf(TextToken const& key, std::string& name, std::optional<std::string>& type) const;
    bool isValue(TextToken const& key, std::size_t open) const;
    bool isLink(TextToken const& key, std::size_t last) const;
    std::size_t endOfLine(std::size_t last) const;
    void value(std::size_t begin, std::size_t end);
    std::string_view textOf(TextToken const& token) const {
        return text_.substr(token.begin, token.end - token.begin);
    }

    std::string_view text_;
    std::vector<TextToken> tokens_;
    std::vector<Element> elements_;
    std::string out_;
    std::string_view wrapper_; // for the block that comes next
    std::size_t next_ = 0;     // token
    bool afterContent_ = false;
    bool failed_ = false;
};

std::optional<std::string> TextToXml::translate() {
    while (next_ < tokens_.size() && !failed_) {
        TextToken const& token = tokens_[next_];
        if (token.kind == TextToken::Close) {
            ++next_;
            if (!elements_.empty())
                closeElement();
        } else if (token.kind == TextToken::Open) {
            std::size_t const last = token.complete ? token.match : tokens_.size() - 1;
            content(token.begin, endOfLine(last));
            next_ = last + 1;
        } else {
            entry();
        }
    }
    if (failed_)
        return std::nullopt;
    while (!elements_.empty())
        closeElement();
    if (afterContent_)
        out_.push_back('\n');
    return std::move(out_);
}

/// An entry is a line up to its end, or the block that opens on the line.
void TextToXml::entry() {
    TextToken const& key = tokens_[next_];
    std::size_t last = next_;
    std::size_t next = next_ + 1;
    auto const onLine = [&] { return next < tokens_.size() && tokens_[next].line == tokens_[last].endLine; };
    for (; onLine() && (tokens_[next].kind == TextToken::Word || tokens_[next].kind == TextToken::String);
         ++next)
        last = next;
    if (onLine() && tokens_[next].kind == TextToken::Open) {
        if (!isValue(key, next)) {
            block(key, next);
            return;
        }
        last = tokens_[next].match;
    }
    next_ = last + 1;
    line(key, last);
}

void TextToXml::line(TextToken const& key, std::size_t last) {
    std::string name;
    std::optional<std::string> type;
    bool const named = nameOf(key, name, type) && !type;
    std::size_t const end = endOfLine(last);
    bool const isFirst = !elements_.empty() && std::exchange(elements_.back().takesClass, false);
    bool const isClass = isFirst && key.kind == TextToken::String;
    // As an element it would come back with quotes that it does not have, or without those that it has.
    bool const changesQuotes = isFirst != (key.kind == TextToken::String);
    // Behind text content it would be the first element, which says what the whole block is.
    bool const isReference = (elements_.empty() || elements_.back().hasContent) &&
                             (name == INSTANCE_ID || name == REFERENCE_TO_SHARED);
    if (!named || changesQuotes || isReference) {
        failed_ = isClass;
        content(key.begin, end);
    } else if (isLink(key, last)) {
        wrapper_ = textOf(key);
        out_.append("<").append(name).append(">\n");
        afterContent_ = false;
    } else {
        out_.append("<").append(name).append(" value=\"");
        value(key.end < end && text_[key.end] == ' ' ? key.end + 1 : key.end, end);
        out_.append("\" />\n");
        afterContent_ = false;
    }
}

void TextToXml::block(TextToken const& key, std::size_t open) {
    std::string name;
    std::optional<std::string> type;
    TextToken const& brace = tokens_[open];
    if (!elements_.empty())
        elements_.back().takesClass = false;
    // An element has no quotes around its name, and an end tag of the root's name would end the document.
    if (key.kind == TextToken::String || !nameOf(key, name, type) || name == FormatTexts::XML_ROOT_NAME) {
        std::size_t const last = brace.complete ? brace.match : tokens_.size() - 1;
        content(key.begin, endOfLine(last));
        next_ = last + 1;
        return;
    }
    next_ = open + 1;
    out_.append("<").append(name);
    if (type) {
        out_.append(" type=\"");
        appendWithEntities(out_, *type);
        out_.push_back('"');
    }
    std::size_t begin = key.end;
    std::size_t end = brace.begin;
    while (begin < end && isSpace(text_[begin]))
        ++begin;
    while (begin < end && isSpace(text_[end - 1]))
        --end;
    if (begin == end && next_ < tokens_.size() &&
        tokens_[next_].line == brace.line) { // a size behind the brace
        std::string_view const size = textOf(tokens_[next_]);
        bool const alone = next_ + 1 == tokens_.size() || tokens_[next_ + 1].line != brace.line;
        if (alone && std::all_of(size.begin(), size.end(), isDigit)) {
            begin = tokens_[next_].begin;
            end = tokens_[next_].end;
            ++next_;
        }
    }
    if (begin < end) {
        out_.append(" value=\"");
        value(begin, end);
        out_.push_back('"');
    }
    out_.append(">\n");
    afterContent_ = false;
    bool const takesClass = begin == end && (name == CHILD || name == SUB_CONTAINER);
    elements_.push_back({std::move(name), std::exchange(wrapper_, {}), takesClass, begin < end});
}

/// What is no entry becomes the text content of the element.
void TextToXml::content(std::size_t begin, std::size_t end) {
    if (afterContent_)
        out_.push_back('\n');
    appendWithEntities(out_, text_.substr(begin, end - begin), "'");
    afterContent_ = true;
    if (!elements_.empty()) {
        elements_.back().hasContent = true;
        elements_.back().takesClass = false;
    }
}

void TextToXml::closeElement() {
    Element const& element = elements_.back();
    out_.append("</").append(element.name).append(">\n");
    if (!element.wrapper.empty())
        out_.append("</").append(element.wrapper).append(">\n");
    elements_.pop_back();
    afterContent_ = false;
}

/// The element that a keyword becomes; false: it cannot be one. Its type is the text in its angle brackets.
bool TextToXml::nameOf(TextToken const& key, std::string& name, std::optional<std::string>& type) const {
    name = textOf(key);
    if (key.kind == TextToken::String) {
        name = name.substr(1, name.size() - (key.complete ? 2 : 1));
        unescape(name);
    } else if (std::size_t const bracket = name.find('<'); bracket != name.npos && name.back() == '>') {
        type = name.substr(bracket + 1, name.size() - bracket - 2);
        name.resize(bracket);
    }
    return isXmlName(name);
}

/// A group on one line is the value of a keyword, unless the keyword is known to open a block.
bool TextToXml::isValue(TextToken const& key, std::size_t open) const {
    if (!tokens_[open].complete)
        return false;
    static constexpr std::array<std::string_view, 7> BLOCKS = {
        "AttrContainer", "Object",     "SharedInstanceCollection", "Instances", OBSERVER_PATH,
        CHILD,           SUB_CONTAINER};
    std::string_view const name = textOf(key);
    if (key.kind == TextToken::Word) {
        if (name == VALUE)
            return true;
        if (name.ends_with('>') || std::find(BLOCKS.begin(), BLOCKS.end(), name) != BLOCKS.end())
            return false;
    }
    return tokens_[tokens_[open].match].line == tokens_[open].line;
}

/// The line is the keyword of an observer link, whose block follows on the next line.
bool TextToXml::isLink(TextToken const& key, std::size_t last) const {
    std::string_view const name = textOf(key);
    return (name == PRE_OBSERVER || name == POST_OBSERVER) && key.kind == TextToken::Word &&
           tokens_[last].begin == key.begin && last + 2 < tokens_.size() &&
           textOf(tokens_[last + 1]) == OBSERVER_PATH && tokens_[last + 2].kind == TextToken::Open &&
           tokens_[last + 2].line == tokens_[last + 1].line;
}

/// The position behind a token and, when it is the last of its line, the blanks that follow it.
std::size_t TextToXml::endOfLine(std::size_t last) const {
    std::size_t const begin = tokens_[last].end;
    std::size_t end = begin;
    while (end < text_.size() && isBlank(text_[end]))
        ++end;
    return end == text_.size() || text_[end] == '\n' || text_[end] == '\r' ? end : begin;
}

/// A value: its strings get apostrophes, and what XML reserves is encoded. The arrow of a map's entry stays.
void TextToXml::value(std::size_t begin, std::size_t end) {
    if (begin >= end)
        return;
    std::string_view const text = text_.substr(begin, end - begin);
    std::size_t done = 0;
    for (TextToken const& token : splitText(text)) {
        if (token.kind != TextToken::String)
            continue;
        appendWithEntities(out_, text.substr(done, token.begin - done), ">");
        out_.push_back('\'');
        appendWithEntities(out_,
                           text.substr(token.begin + 1, token.end - token.begin - (token.complete ? 2 : 1)));
        out_.push_back('\'');
        done = token.end;
    }
    appendWithEntities(out_, text.substr(done), ">");
}

// XML to text

class XmlToText {
public:
    explicit XmlToText(std::string_view text) : text_(text) {}

    std::string translate();

private:
    struct Attribute {
        std::string_view name;
        std::string_view value;
    };
    struct Tag {
        std::string_view name;
        std::optional<std::string_view> type;
        std::optional<std::string_view> value;
        std::vector<Attribute> others;
        bool empty = false;
    };
    struct Block {
        bool inBraces; // false: the element has no block in a text
        bool takesClass;
        bool hasEntries;
    };

    void markup();
    Tag readTag();
    void element(Tag const& tag);
    void content(std::string_view raw);
    void close();
    void beginLine();
    bool opensLink(Tag const& tag) const;
    std::string value(std::string_view raw) const;
    std::string line(std::string_view key, std::string_view value) const;

    std::string_view text_;
    std::size_t pos_ = 0;
    std::vector<Block> blocks_;
    std::string out_;
    bool behindBrace_ = false;
};

constexpr std::size_t ANY_NUMBER = static_cast<std::size_t>(-1);

/// Whether `text` can stand in a text as it is: braces paired, strings ended, `strings` of them.
bool isSound(std::vector<TextToken> const& tokens, std::size_t strings = ANY_NUMBER) {
    std::size_t found = 0;
    for (TextToken const& token : tokens) {
        if (!token.complete)
            return false;
        found += token.kind == TextToken::String;
    }
    return strings == ANY_NUMBER || found == strings;
}

/// Whether `text` can be the value of a keyword line: at most one group, with nothing behind it.
bool isSoundValue(std::string_view text, std::size_t strings) {
    std::vector<TextToken> const tokens = splitText(text);
    if (!isSound(tokens, strings))
        return false;
    for (std::size_t i = 0; i < tokens.size(); ++i)
        if (tokens[i].kind == TextToken::Open)
            return tokens[i].match + 1 == tokens.size();
    return true;
}

/// An escaped string for between double quotes: as it is, when it can be; otherwise what it stands for,
/// escaped anew.
std::string requoted(std::string_view raw) {
    std::string content = decoded(raw);
    bool complete = false;
    std::string quoted = '"' + content + '"';
    if (endOfString(quoted, 0, complete) == quoted.size() && complete)
        return quoted;
    unescape(content);
    return quotedText(content);
}

std::string textKey(std::string const& key) {
    std::vector<TextToken> const tokens = splitText(key);
    bool const isWord = tokens.size() == 1 && tokens[0].kind == TextToken::Word &&
                        tokens[0].end - tokens[0].begin == key.size();
    return isWord ? key : quotedText(key);
}

std::string XmlToText::translate() {
    while (pos_ < text_.size()) {
        std::size_t tag = text_.find('<', pos_);
        while (tag < text_.size() && text_.substr(tag + 1, 1) == ">") // no tag, but text
            tag = text_.find('<', tag + 1);
        tag = std::min(tag, text_.size());
        content(text_.substr(pos_, tag - pos_));
        pos_ = tag + 1;
        if (pos_ >= text_.size())
            break;
        char const kind = text_[pos_];
        if (kind == '!' || kind == '?') {
            markup();
        } else if (kind == '/') {
            pos_ = text_.find('>', pos_);
            pos_ = pos_ == text_.npos ? text_.size() : pos_ + 1;
            close();
        } else {
            element(readTag());
        }
    }
    while (!blocks_.empty())
        close();
    return std::move(out_);
}

/// Passes over a comment, a processing instruction or a declaration.
void XmlToText::markup() {
    std::string_view const end = text_[pos_] == '?' ? "?>" : text_.substr(pos_, 3) == "!--" ? "-->" : ">";
    std::size_t const found = text_.find(end, end.size() == 3 ? pos_ + 3 : pos_);
    pos_ = found == text_.npos ? text_.size() : found + end.size();
}

/// Reads a start tag from its name to behind its ">".
XmlToText::Tag XmlToText::readTag() {
    auto const upTo = [this](auto const& isEnd) {
        std::size_t const begin = pos_;
        while (pos_ < text_.size() && !isEnd(text_[pos_]))
            ++pos_;
        return text_.substr(begin, pos_ - begin);
    };
    Tag tag;
    tag.name = upTo([](char c) { return isSpace(c) || c == '>' || c == '/'; });
    while (pos_ < text_.size() && text_[pos_] != '>') {
        if (isSpace(text_[pos_]) || text_[pos_] == '/' || text_[pos_] == '=') {
            tag.empty = text_[pos_++] == '/';
            continue;
        }
        tag.empty = false;
        std::string_view const name =
            upTo([](char c) { return isSpace(c) || c == '=' || c == '"' || c == '>'; });
        upTo([](char c) { return !isSpace(c) && c != '='; });
        std::string_view value;
        if (pos_ < text_.size() && text_[pos_] == '"') {
            ++pos_;
            value = upTo([](char c) { return c == '"'; });
            pos_ += pos_ < text_.size();
        }
        if (name == "value" && !tag.value)
            tag.value = value;
        else if (name == "type" && !tag.type)
            tag.type = value;
        else
            tag.others.push_back({name, value});
    }
    pos_ += pos_ < text_.size();
    return tag;
}

void XmlToText::element(Tag const& tag) {
    std::string key(tag.name);
    if (tag.type)
        key.append("<").append(decoded(*tag.type)).append(">");
    bool const isLine = tag.empty && tag.value && !tag.type && tag.others.empty();
    bool const isClass =
        isLine && !blocks_.empty() && blocks_.back().takesClass && !blocks_.back().hasEntries;
    key = isClass ? quotedText(key) : textKey(key);
    beginLine();
    if (isLine) {
        out_ += line(key, value(*tag.value));
        return;
    }
    if (opensLink(tag)) {
        out_ += line(key, {});
        blocks_.push_back({false, false, false});
        return;
    }
    out_.append(key).append(" { ");
    if (tag.value && !tag.value->empty())
        out_.append(" ").append(value(*tag.value));
    behindBrace_ = true;
    blocks_.push_back({true, tag.name == CHILD || tag.name == SUB_CONTAINER, tag.value.has_value()});
    for (Attribute const& other : tag.others) {
        beginLine();
        out_ += line(textKey(std::string(other.name)), quotedText(decoded(other.value)));
    }
    if (tag.empty)
        close();
}

/// An observer link is a line with the block of its path below, in XML an element around it.
bool XmlToText::opensLink(Tag const& tag) const {
    if ((tag.name != PRE_OBSERVER && tag.name != POST_OBSERVER) || tag.empty || tag.type || tag.value ||
        !tag.others.empty())
        return false;
    std::size_t next = pos_;
    while (next < text_.size() && isSpace(text_[next]))
        ++next;
    std::string_view rest = text_.substr(next);
    if (!rest.starts_with('<') || !rest.substr(1).starts_with(OBSERVER_PATH))
        return false;
    rest.remove_prefix(1 + OBSERVER_PATH.size());
    return !rest.empty() && (rest[0] == '>' || isSpace(rest[0]));
}

/// The text content of an element, without the line breaks around it.
void XmlToText::content(std::string_view raw) {
    while (!raw.empty() && isSpace(raw.front()))
        raw.remove_prefix(1);
    if (raw.empty())
        return;
    std::size_t end = raw.size();
    while (isSpace(raw[end - 1]))
        --end;
    while (end < raw.size() && isBlank(raw[end]))
        ++end;
    std::string text = decoded(raw.substr(0, end));
    if (!isSound(splitText(text, blocks_.empty() ? TextLevel::Top : TextLevel::Nested)))
        text = quotedText(text);
    if (behindBrace_ && text.front() == '{') {
        behindBrace_ = false;
        blocks_.back().hasEntries = true;
    } else {
        beginLine();
    }
    out_.append(text).push_back('\n');
}

void XmlToText::close() {
    if (blocks_.empty())
        return;
    if (blocks_.back().inBraces) {
        if (std::exchange(behindBrace_, false))
            out_.push_back('\n');
        out_.append("}\n");
    }
    blocks_.pop_back();
}

/// Something follows on a line of its own.
void XmlToText::beginLine() {
    if (std::exchange(behindBrace_, false))
        out_.push_back('\n');
    if (!blocks_.empty())
        blocks_.back().hasEntries = true;
}

/// A value: its strings get double quotes. What cannot stand in a text as it is becomes one string.
std::string XmlToText::value(std::string_view raw) const {
    std::string result;
    std::size_t strings = 0;
    for (std::size_t i = 0; i < raw.size();) {
        std::size_t const quote = std::min(raw.find('\'', i), raw.size());
        std::string plain = decoded(raw.substr(i, quote - i));
        std::replace_if(
            plain.begin(), plain.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
        result += plain;
        i = quote;
        if (quote < raw.size()) {
            std::size_t const end = std::min(raw.find('\'', quote + 1), raw.size());
            result += requoted(raw.substr(quote + 1, end - quote - 1));
            ++strings;
            i = end + 1;
        }
    }
    return isSoundValue(result, strings) ? result : quotedText(decoded(raw));
}

std::string XmlToText::line(std::string_view key, std::string_view value) const {
    std::string result(key);
    return result.append(" ").append(value).append("\n");
}

} // namespace

std::optional<std::string> translateRawText(std::string_view text, ModelFormat::Format from,
                                            ModelFormat::Format to) {
    if (isXml(from) == isXml(to))
        return std::string(text);
    if (isXml(to))
        return TextToXml(text).translate();
    return XmlToText(text).translate();
}

} // namespace Zorvan::AttributeContainer
