// SPDX-License-Identifier: MIT
#include "serialization/TextTokens.h"

#include "serialization/CharReader.h"

#include <algorithm>

namespace Zorvan::AttributeContainer {

namespace {

bool isSpace(char c) { return CharReader::isSpace(static_cast<unsigned char>(c)); }

class TextSplitter {
public:
    TextSplitter(std::string_view text, TextLevel level) : text_(text), level_(level) {}

    std::vector<TextToken> split();

private:
    void word(TextToken& token);
    void keyword(TextToken& token, bool& endsEntry);
    void close(TextToken& token);

    std::string_view text_;
    TextLevel level_;
    std::vector<TextToken> tokens_;
    std::vector<std::size_t> open_;
};

std::vector<TextToken> TextSplitter::split() {
    std::size_t line = 0;
    bool beginsEntry = true;
    for (std::size_t i = 0; i < text_.size();) {
        char const c = text_[i];
        if (isSpace(c)) {
            line += c == '\n';
            beginsEntry |= c == '\n';
            ++i;
            continue;
        }
        TextToken token{TextToken::Word, true, i, i + 1, line, line};
        bool const isKeyword = beginsEntry && level_ == TextLevel::Top && open_.empty();
        beginsEntry = false;
        if (c == '{') {
            token.kind = TextToken::Open;
            token.complete = false;
            open_.push_back(tokens_.size());
        } else if (c == '}') {
            close(token);
            beginsEntry = true;
        } else if (c == '"') {
            token.kind = TextToken::String;
            token.end = endOfString(text_, i, token.complete);
            line += static_cast<std::size_t>(
                std::count(text_.begin() + static_cast<std::ptrdiff_t>(i),
                           text_.begin() + static_cast<std::ptrdiff_t>(token.end), '\n'));
            token.endLine = line;
        } else if (isKeyword) {
            keyword(token, beginsEntry);
        } else {
            word(token);
        }
        i = token.end;
        tokens_.push_back(token);
    }
    return std::move(tokens_);
}

void TextSplitter::word(TextToken& token) {
    auto const ends = [&](std::size_t at) {
        return isSpace(text_[at]) || text_[at] == '{' || text_[at] == '}' ||
               (text_[at] == '"' && at - token.begin >= 2 && text_.substr(at - 2, 2) == "=>");
    };
    while (token.end < text_.size() && !ends(token.end))
        ++token.end;
}

/// The keyword of an entry of the top level reaches to the next white space, whatever it holds, and is one
/// token. Its braces count, but a quote in it opens no string and a "}" too many closes nothing. When they
/// are closed, the entry ends with it.
void TextSplitter::keyword(TextToken& token, bool& endsEntry) {
    std::size_t depth = 0;
    bool isGroup = false;
    for (token.end = token.begin; token.end < text_.size() && !isSpace(text_[token.end]); ++token.end) {
        char const c = text_[token.end];
        isGroup |= c == '{';
        depth += c == '{';
        depth -= c == '}' && depth > 0;
    }
    endsEntry = isGroup && depth == 0;
    if (depth > 0) {
        token.kind = TextToken::Open;
        token.complete = false;
        open_.insert(open_.end(), depth, tokens_.size());
    }
}

void TextSplitter::close(TextToken& token) {
    token.kind = TextToken::Close;
    token.complete = !open_.empty();
    if (!token.complete)
        return;
    token.match = open_.back();
    open_.pop_back();
    TextToken& opener = tokens_[token.match];
    opener.match = tokens_.size();
    opener.complete = open_.empty() || open_.back() != token.match;
}

} // namespace

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

std::vector<TextToken> splitText(std::string_view text, TextLevel level) {
    return TextSplitter(text, level).split();
}

} // namespace Zorvan::AttributeContainer
