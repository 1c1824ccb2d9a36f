// SPDX-License-Identifier: MIT
#include "Outline.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <utility>

namespace kxmodel {

namespace {

constexpr std::string_view whiteSpace = " \t\n\v\f\r";

/// The blocks that lead from the root to a container. Below any other block nothing is looked for.
enum class Block : std::uint8_t { Container, Member, Attribute, Other };

struct OpenBlock {
    Block kind;
    bool hasId = false;
};

/// Collects the outline from the blocks and entries of either rendering.
class OutlineBuilder {
public:
    void open(std::string_view name) {
        outline_.hasBlocks = true;
        if (name == "Child" && blocks_.empty())
            outline_.isRootObject = true;
        blocks_.push_back({kindOf(name)});
        if (blocks_.back().kind == Block::Attribute)
            attributeType_ = name;
        else if (blocks_.back().kind == Block::Other)
            ++numOther_;
    }

    void close() {
        if (blocks_.empty())
            return;
        if (blocks_.back().kind == Block::Other)
            --numOther_;
        blocks_.pop_back();
    }

    void entry(std::string_view keyword, std::string_view value, std::size_t offset) {
        if (numOther_ != 0 || blocks_.empty())
            return;
        OpenBlock& block = blocks_.back();
        if (block.kind == Block::Attribute && keyword == "Name")
            rootAttribute(value);
        if (block.kind != Block::Member)
            return;
        if (keyword == "InstanceID") {
            std::uint64_t id = 0;
            auto const [end, error] = std::from_chars(value.data(), value.data() + value.size(), id);
            block.hasId = error == std::errc() && end != value.data();
            if (block.hasId)
                outline_.instanceIds.push_back(id);
        } else if (keyword == "ReferenceToShared" && !block.hasId && !outline_.referenceWithoutId) {
            outline_.referenceWithoutId = offset;
        }
    }

    Outline take() {
        outline_.isRootObject |= numMatching_ == objectAttributes.size();
        return std::move(outline_);
    }

private:
    struct NameAndType {
        std::string_view name;
        std::string_view type;
    };
    static constexpr std::array<NameAndType, 6> objectAttributes = {{{"Name", "Attr<String>"},
                                                                     {"Action", "Attr<String>"},
                                                                     {"Event", "Attr<String>"},
                                                                     {"MajorVersion", "Attr<uint16_t>"},
                                                                     {"MinorVersion", "Attr<uint16_t>"},
                                                                     {"UUID", "Attr<Uuid>"}}};

    static Block kindOf(std::string_view name) {
        if (name == "AttrContainer")
            return Block::Container;
        if (name == "Child" || name == "SubContainer")
            return Block::Member;
        return name.starts_with("Attr<") ? Block::Attribute : Block::Other;
    }

    /// An attribute counts when it is the root's own, and only as long as the ones before it were an
    /// object's.
    void rootAttribute(std::string_view name) {
        bool const isRoots =
            blocks_.size() == 1 || (blocks_.size() == 2 && blocks_[0].kind == Block::Container);
        if (!isRoots || numRootAttributes_++ != numMatching_ || numMatching_ == objectAttributes.size())
            return;
        NameAndType const& expected = objectAttributes[numMatching_];
        if (name == expected.name && attributeType_ == expected.type)
            ++numMatching_;
    }

    Outline outline_;
    std::vector<OpenBlock> blocks_;
    std::string attributeType_;
    std::size_t numOther_ = 0;
    std::size_t numRootAttributes_ = 0;
    std::size_t numMatching_ = 0;
};

/// Text: words, quoted strings and braces, separated by white space. A word before a "{" names a block, a
/// word before anything else is taken for the keyword of an entry.
class TextScan {
public:
    explicit TextScan(std::string_view text) : text_(text) {}

    Outline run() {
        while ((position_ = text_.find_first_not_of(whiteSpace, position_)) != text_.npos) {
            char const first = text_[position_];
            if (first == '{') {
                builder_.open(word_);
                endToken(1, {});
            } else if (first == '}') {
                builder_.close();
                endToken(1, {});
            } else if (first == '"') {
                std::size_t const length = quotedLength();
                builder_.entry(word_, text_.substr(position_ + 1, length - 2), wordOffset_);
                endToken(length, {});
            } else {
                std::size_t const end = text_.find_first_of(" \t\n\v\f\r\"", position_);
                std::string_view const word = text_.substr(position_, end - position_);
                builder_.entry(word_, word, wordOffset_);
                if (word == "ReferenceToShared")
                    builder_.entry(word, {}, position_);
                endToken(word.size(), word);
            }
        }
        return builder_.take();
    }

private:
    void endToken(std::size_t length, std::string_view word) {
        word_ = word;
        wordOffset_ = position_;
        position_ = std::min(position_ + length, text_.size());
    }

    std::size_t quotedLength() const {
        for (std::size_t i = position_ + 1; i < text_.size(); ++i) {
            if (text_[i] == '\\')
                ++i;
            else if (text_[i] == '"')
                return i + 1 - position_;
        }
        return text_.size() - position_ + 1;
    }

    std::string_view text_;
    std::size_t position_ = 0;
    std::string_view word_;
    std::size_t wordOffset_ = 0;
    OutlineBuilder builder_;
};

/// XML: elements are blocks, empty elements are entries with the attribute "value".
class XmlScan {
public:
    explicit XmlScan(std::string_view text) : text_(text) {}

    Outline run() {
        while ((position_ = text_.find('<', position_)) != text_.npos) {
            std::string_view const rest = text_.substr(position_);
            if (rest.starts_with("<!--"))
                skipBehind("-->");
            else if (rest.starts_with("<?"))
                skipBehind("?>");
            else
                tag();
        }
        return builder_.take();
    }

private:
    void skipBehind(std::string_view end) {
        std::size_t const found = text_.find(end, position_);
        position_ = found == text_.npos ? text_.size() : found + end.size();
    }

    /// The tag that begins at the position; a ">" in an attribute value does not end it.
    void tag() {
        std::size_t const begin = position_;
        bool isQuoted = false;
        std::size_t end = begin + 1;
        for (; end < text_.size() && (isQuoted || text_[end] != '>'); ++end)
            isQuoted ^= text_[end] == '"';
        position_ = std::min(end + 1, text_.size());

        std::string_view const inner = text_.substr(begin + 1, end - begin - 1);
        std::string_view const name = inner.substr(0, inner.find_first_of(" \t\n\v\f\r/", 1));
        if (name == "VOXA" || name == "/VOXA")
            return;
        if (inner.starts_with('/'))
            builder_.close();
        else if (inner.ends_with('/'))
            builder_.entry(name, withoutApostrophes(attribute(inner, "value=\"")), begin);
        else if (std::string_view const type = attribute(inner, "type=\""); !type.empty())
            builder_.open(std::string(name).append("<").append(type).append(">"));
        else
            builder_.open(name);
    }

    static std::string_view attribute(std::string_view inner, std::string_view start) {
        std::size_t const found = inner.find(start);
        if (found == inner.npos)
            return {};
        std::string_view const value = inner.substr(found + start.size());
        return value.substr(0, value.find('"'));
    }

    static std::string_view withoutApostrophes(std::string_view value) {
        bool const isString = value.size() >= 2 && value.front() == '\'' && value.back() == '\'';
        return isString ? value.substr(1, value.size() - 2) : value;
    }

    std::string_view text_;
    std::size_t position_ = 0;
    OutlineBuilder builder_;
};

} // namespace

Outline outlineOf(std::string_view text, Zorvan::AttributeContainer::ModelFormat::Format rendering) {
    if (rendering == Zorvan::AttributeContainer::ModelFormat::Text)
        return TextScan(text).run();
    return XmlScan(text).run();
}

} // namespace kxmodel
