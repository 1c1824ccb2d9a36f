// SPDX-License-Identifier: MIT
#include "serialization/RawText.h"

#include "serialization/CharReader.h"
#include "serialization/FormatTexts.h"
#include "serialization/QuotedText.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::size_t NONE = static_cast<std::size_t>(-1);
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

/// A piece of a text between white space. `match` is the index of the other brace, `complete` whether there
/// is one, or whether a string has its closing quote.
struct Token {
    enum Kind { Word, String, Open, Close };
    Kind kind;
    bool complete;
    std::size_t begin;
    std::size_t end;
    std::size_t line;
    std::size_t endLine;
    std::size_t match = NONE;
};

/// The position behind the string whose opening quote is at `begin`.
std::size_t endOfString(std::string_view text, std::size_t begin, bool& complete) {
    for (std::size_t i = begin + 1; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            complete = true;
            return i + 1;
        }
    }
    complete = false;
    return text.size();
}

/// Splits a text into tokens as it is read raw: a quote opens a string at the start of a word and behind
/// "=>".
std::vector<Token> splitText(std::string_view text) {
    std::vector<Token> tokens;
    std::vector<std::size_t> open;
    std::size_t line = 0;
    for (std::size_t i = 0; i < text.size();) {
        char const c = text[i];
        if (isSpace(c)) {
            line += c == '\n';
            ++i;
            continue;
        }
        Token token{Token::Word, true, i, i + 1, line, line};
        if (c == '{') {
            token.kind = Token::Open;
            token.complete = false;
            open.push_back(tokens.size());
        } else if (c == '}') {
            token.kind = Token::Close;
            token.complete = !open.empty();
            if (token.complete) {
                token.match = open.back();
                tokens[token.match].match = tokens.size();
                tokens[token.match].complete = true;
                open.pop_back();
            }
        } else if (c == '"') {
            token.kind = Token::String;
            token.end = endOfString(text, i, token.complete);
            line += static_cast<std::size_t>(std::count(text.begin() + static_cast<std::ptrdiff_t>(i),
                                                        text.begin() + static_cast<std::ptrdiff_t>(token.end),
                                                        '\n'));
            token.endLine = line;
        } else {
            auto const ends = [&](std::size_t at) {
                return isSpace(text[at]) || text[at] == '{' || text[at] == '}' ||
                       (text[at] == '"' && at - i >= 2 && text.substr(at - 2, 2) == "=>");
            };
            while (token.end < text.size() && !ends(token.end))
                ++token.end;
        }
        i = token.end;
        tokens.push_back(token);
    }
    return tokens;
}

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
    explicit TextToXml(std::string_view text) : text_(text), tokens_(splitText(text)) {}

    std::optional<std::string> translate();

private:
    struct Element {
        std::string name;
        std::string_view wrapper; // an element around this one, that a text has no block for
        bool takesClass;          // the first line names a class
        bool hasContent;          // text stands before its next entry
    };

    void entry();
    void line(Token const& key, std::size_t last);
    void block(Token const& key, std::size_t open);
    void content(std::size_t begin, std::size_t end);
    void closeElement();
    bool nameOf(Token const& key, std::string& name, std::string& type) const;
    bool isValue(Token const& key, std::size_t open) const;
    bool isLink(Token const& key, std::size_t last) const;
    std::size_t endOfLine(std::size_t last) const;
    void value(std::size_t begin, std::size_t end);
    std::string_view textOf(Token const& token) const {
        return text_.substr(token.begin, token.end - token.begin);
    }

    std::string_view text_;
    std::vector<Token> tokens_;
    std::vector<Element> elements_;
    std::string out_;
    std::string_view wrapper_; // for the block that comes next
    std::size_t next_ = 0;     // token
    bool afterContent_ = false;
    bool failed_ = false;
};

std::optional<std::string> TextToXml::translate() {
    while (next_ < tokens_.size() && !failed_) {
        Token const& token = tokens_[next_];
        if (token.kind == Token::Close) {
            ++next_;
            if (!elements_.empty())
                closeElement();
        } else if (token.kind == Token::Open) {
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
    Token const& key = tokens_[next_];
    std::size_t last = next_;
    std::size_t next = next_ + 1;
    auto const onLine = [&] { return next < tokens_.size() && tokens_[next].line == tokens_[last].endLine; };
    for (; onLine() && (tokens_[next].kind == Token::Word || tokens_[next].kind == Token::String); ++next)
        last = next;
    if (onLine() && tokens_[next].kind == Token::Open) {
        if (!isValue(key, next)) {
            block(key, next);
            return;
        }
        last = tokens_[next].match;
    }
    next_ = last + 1;
    line(key, last);
}

void TextToXml::line(Token const& key, std::size_t last) {
    std::string name;
    std::string type;
    bool const named = nameOf(key, name, type) && type.empty();
    std::size_t const end = endOfLine(last);
    bool const isFirst = !elements_.empty() && std::exchange(elements_.back().takesClass, false);
    bool const isClass = isFirst && key.kind == Token::String;
    // As an element it would come back with quotes that it does not have, or without those that it has.
    bool const changesQuotes = isFirst != (key.kind == Token::String);
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

void TextToXml::block(Token const& key, std::size_t open) {
    std::string name;
    std::string type;
    Token const& brace = tokens_[open];
    if (!elements_.empty())
        elements_.back().takesClass = false;
    // An element has no quotes around its name, and an end tag of the root's name would end the document.
    if (key.kind == Token::String || !nameOf(key, name, type) || name == FormatTexts::XML_ROOT_NAME) {
        std::size_t const last = brace.complete ? brace.match : tokens_.size() - 1;
        content(key.begin, endOfLine(last));
        next_ = last + 1;
        return;
    }
    next_ = open + 1;
    out_.append("<").append(name);
    if (!type.empty()) {
        out_.append(" type=\"");
        appendWithEntities(out_, type);
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
bool TextToXml::nameOf(Token const& key, std::string& name, std::string& type) const {
    name = textOf(key);
    if (key.kind == Token::String) {
        name = name.substr(1, name.size() - (key.complete ? 2 : 1));
        unescape(name);
    } else if (std::size_t const bracket = name.find('<'); bracket != name.npos && name.back() == '>') {
        type = name.substr(bracket + 1, name.size() - bracket - 2);
        name.resize(bracket);
    }
    return isXmlName(name);
}

/// A group on one line is the value of a keyword, unless the keyword is known to open a block.
bool TextToXml::isValue(Token const& key, std::size_t open) const {
    if (!tokens_[open].complete)
        return false;
    static constexpr std::array<std::string_view, 7> BLOCKS = {
        "AttrContainer", "Object",     "SharedInstanceCollection", "Instances", OBSERVER_PATH,
        CHILD,           SUB_CONTAINER};
    std::string_view const name = textOf(key);
    if (key.kind == Token::Word) {
        if (name == VALUE)
            return true;
        if (name.ends_with('>') || std::find(BLOCKS.begin(), BLOCKS.end(), name) != BLOCKS.end())
            return false;
    }
    return tokens_[tokens_[open].match].line == tokens_[open].line;
}

/// The line is the keyword of an observer link, whose block follows on the next line.
bool TextToXml::isLink(Token const& key, std::size_t last) const {
    std::string_view const name = textOf(key);
    return (name == PRE_OBSERVER || name == POST_OBSERVER) && key.kind == Token::Word &&
           tokens_[last].begin == key.begin && last + 2 < tokens_.size() &&
           textOf(tokens_[last + 1]) == OBSERVER_PATH && tokens_[last + 2].kind == Token::Open &&
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
    for (Token const& token : splitText(text)) {
        if (token.kind != Token::String)
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

/// Whether `text` can stand in a text as it is: braces paired, strings ended, `strings` of them.
bool isSound(std::vector<Token> const& tokens, std::size_t strings) {
    std::size_t found = 0;
    for (Token const& token : tokens) {
        if (!token.complete)
            return false;
        found += token.kind == Token::String;
    }
    return strings == NONE || found == strings;
}

/// Whether `text` can be the value of a keyword line: at most one group, with nothing behind it.
bool isSoundValue(std::string_view text, std::size_t strings) {
    std::vector<Token> const tokens = splitText(text);
    if (!isSound(tokens, strings))
        return false;
    for (std::size_t i = 0; i < tokens.size(); ++i)
        if (tokens[i].kind == Token::Open)
            return tokens[i].match + 1 == tokens.size();
    return true;
}

/// An escaped string for between double quotes: as it is, when it can be; otherwise what it stands for,
/// escaped anew.
std::string requoted(std::string_view raw) {
    std::string content = decoded(raw);
    bool complete = false;
    std::string const quoted = '"' + content + '"';
    if (endOfString(quoted, 0, complete) == quoted.size() && complete)
        return quoted;
    unescape(content);
    return quotedText(content);
}

std::string textKey(std::string const& key) {
    std::vector<Token> const tokens = splitText(key);
    bool const isWord =
        tokens.size() == 1 && tokens[0].kind == Token::Word && tokens[0].end - tokens[0].begin == key.size();
    return isWord ? key : quotedText(key);
}

std::string XmlToText::translate() {
    while (pos_ < text_.size()) {
        std::size_t const tag = std::min(text_.find('<', pos_), text_.size());
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
        } else if (kind == '>') {
            ++pos_;
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
    if (!isSound(splitText(text), NONE))
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

// Names

/// The code point at the front of a UTF-8 text, which is removed; false when there is no proper one.
bool takeCodePoint(std::string_view& text, std::uint32_t& point) {
    auto const byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    std::size_t const length = byte(0) < 0x80   ? 1
                               : byte(0) < 0xC2 ? 0
                               : byte(0) < 0xE0 ? 2
                               : byte(0) < 0xF0 ? 3
                                                : 4;
    if (length == 0 || length > text.size())
        return false;
    point = length == 1 ? byte(0) : byte(0) & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80)
            return false;
        point = (point << 6) | (byte(i) & 0x3Fu);
    }
    constexpr std::array<std::uint32_t, 5> SMALLEST = {0, 0, 0x80, 0x800, 0x10000};
    text.remove_prefix(length);
    return point >= SMALLEST[length];
}

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

template <std::size_t N>
bool isIn(std::array<Range, N> const& ranges, std::uint32_t point) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [point](Range range) { return point >= range.first && point <= range.last; });
}

constexpr std::array<Range, 16> NAME_START = {{{':', ':'},
                                               {'A', 'Z'},
                                               {'_', '_'},
                                               {'a', 'z'},
                                               {0xC0, 0xD6},
                                               {0xD8, 0xF6},
                                               {0xF8, 0x2FF},
                                               {0x370, 0x37D},
                                               {0x37F, 0x1FFF},
                                               {0x200C, 0x200D},
                                               {0x2070, 0x218F},
                                               {0x2C00, 0x2FEF},
                                               {0x3001, 0xD7FF},
                                               {0xF900, 0xFDCF},
                                               {0xFDF0, 0xFFFD},
                                               {0x10000, 0xEFFFF}}};
constexpr std::array<Range, 5> NAME_REST = {
    {{'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}}};

} // namespace

bool isXmlName(std::string_view name) {
    bool first = true;
    while (!name.empty()) {
        std::uint32_t point = 0;
        if (!takeCodePoint(name, point) || !(isIn(NAME_START, point) || (!first && isIn(NAME_REST, point))))
            return false;
        first = false;
    }
    return !first;
}

std::optional<std::string> translateRawText(std::string_view text, ModelFormat::Format from,
                                            ModelFormat::Format to) {
    if (isXml(from) == isXml(to))
        return std::string(text);
    if (isXml(to))
        return TextToXml(text).translate();
    return XmlToText(text).translate();
}

} // namespace Zorvan::AttributeContainer
