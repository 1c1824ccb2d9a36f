// SPDX-License-Identifier: MIT
#include "serialization/ModelInFormatAccess.h"

#include "serialization/CharReader.h"
#include "serialization/FormatTexts.h"

#include <istream>

namespace Zorvan::AttributeContainer {

namespace {

/// Reads on behind a keyword over the raw text of an entry, and keeps the text when it is asked to.
class EntryReader {
public:
    EntryReader(std::istream& in, std::string* text) : reader_(in), text_(text) {}

    bool readText(std::string_view keyword, bool quoted);
    bool readElement();
    bool readElementContent();
    bool readTagEnd(bool& empty);
    bool readMarkup(int kind);
    bool readUntil(std::string_view mark);
    void readStray() {
        if (reader_.good())
            run([](int c) { return c != '<'; });
    }
    bool readValueEnd() { return readUntil("\""); }
    void readSpace() {
        if (reader_.good())
            run(CharReader::isSpace);
    }
    bool readSpaceAndComments();

    /// The input ended in the middle of a word.
    bool cutWord() const { return cutWord_; }
    /// The end tag of the root was met inside the entry.
    bool metRootEnd() const { return metRootEnd_; }

private:
    int peek() { return reader_.good() ? reader_.peek() : CharReader::END; }

    int get() {
        int const c = reader_.get();
        if (text_ && c != CharReader::END)
            text_->push_back(static_cast<char>(c));
        return c;
    }

    template <class Predicate>
    int run(Predicate wanted) {
        return text_ ? reader_.readWhile(*text_, wanted) : reader_.skipWhile(wanted);
    }

    bool readString();
    bool readEndTag();

    CharReader reader_;
    std::string* text_;
    bool cutWord_ = false;
    bool metRootEnd_ = false;
};

/// The rest of an entry of a text. A quote opens a string at the start of a word, and behind the arrow of a
/// map's entry.
bool EntryReader::readText(std::string_view keyword, bool quoted) {
    std::size_t depth = 0;
    bool closed = false;
    if (!quoted) {
        for (char const c : keyword) {
            if (c == '{')
                ++depth;
            else if (c == '}' && depth > 0)
                closed = --depth == 0;
        }
        if (keyword == "}" || (closed && depth == 0))
            return true;
    }
    auto const isPlain = [](int c) {
        return !CharReader::isSpace(c) && c != '{' && c != '}' && c != '"' && c != '=' && c != '>';
    };
    // The last two characters of the word. A word may begin with any character, the zero byte too.
    constexpr int NOT_IN_WORD = -1;
    int before = NOT_IN_WORD;
    int last = NOT_IN_WORD;
    for (;;) {
        int const c = peek();
        if (c == CharReader::END) {
            cutWord_ = last != NOT_IN_WORD;
            return depth == 0;
        }
        if (depth == 0 && (c == '\n' || c == '}'))
            return true;
        if (isPlain(c)) {
            run(isPlain);
            last = c;
            continue;
        }
        get();
        if (c == '"' && (last == NOT_IN_WORD || (before == '=' && last == '>'))) {
            if (!readString())
                return false;
            last = NOT_IN_WORD;
        } else if (c == '{') {
            ++depth;
            last = NOT_IN_WORD;
        } else if (c == '}') {
            last = NOT_IN_WORD;
            if (--depth == 0)
                return true;
        } else if (CharReader::isSpace(c)) {
            last = NOT_IN_WORD;
        } else {
            before = last;
            last = c;
        }
    }
}

/// A string of a text, behind its opening quote.
bool EntryReader::readString() {
    for (;;) {
        if (run([](int c) { return c != '"' && c != '\\'; }) == CharReader::END)
            return false;
        if (get() == '"')
            return true;
        if (get() == CharReader::END)
            return false;
    }
}

/// The rest of an element from within its start tag.
bool EntryReader::readElement() {
    bool empty = false;
    return readTagEnd(empty) && (empty || readElementContent());
}

/// The content of an element, with its end tag.
bool EntryReader::readElementContent() {
    for (std::size_t depth = 1; depth > 0;) {
        if (!readUntil("<"))
            return false;
        int const c = get();
        if (c == CharReader::END)
            return false;
        if (c == '/') {
            if (!readEndTag())
                return false;
            --depth;
        } else if (c == '!' || c == '?') {
            if (!readMarkup(c))
                return false;
        } else if (c != '>') {
            bool empty = false;
            if (!readTagEnd(empty))
                return false;
            if (!empty)
                ++depth;
        }
    }
    return true;
}

/// From within a start tag past its ">"; `empty`: it was "/>".
bool EntryReader::readTagEnd(bool& empty) {
    for (int c = 0, before = 0;; before = c) {
        c = get();
        if (c == CharReader::END || (c == '"' && !readUntil("\"")))
            return false;
        if (c == '>') {
            empty = before == '/';
            return true;
        }
    }
}

/// An end tag from behind its "</". The root's ends everything that is open.
bool EntryReader::readEndTag() {
    std::string name;
    if (!reader_.good() || reader_.readWhile(name, [](int c) { return c != '>'; }) == CharReader::END)
        return false;
    if (text_)
        *text_ += name;
    get();
    metRootEnd_ = name == FormatTexts::XML_ROOT_NAME;
    return !metRootEnd_;
}

bool EntryReader::readMarkup(int kind) {
    if (kind == '?')
        return readUntil("?>");
    if (peek() != '-')
        return readUntil(">");
    get();
    if (peek() != '-')
        return readUntil(">");
    get();
    return readUntil("-->");
}

/// Past the next `mark`, which is one of those that the functions above look for.
bool EntryReader::readUntil(std::string_view mark) {
    if (!reader_.good())
        return false;
    char const first = mark.front();
    for (std::size_t matched = 0; matched < mark.size();) {
        if (matched == 0 &&
            run([first](int c) { return c != static_cast<unsigned char>(first); }) == CharReader::END)
            return false;
        int const c = get();
        if (c == CharReader::END)
            return false;
        if (c == static_cast<unsigned char>(mark[matched]))
            ++matched;
        else if (c != static_cast<unsigned char>(first))
            matched = 0;
        // Otherwise one more of the first character: "--->" ends a comment as "-->" does.
    }
    return true;
}

/// White space and comments in front of the next tag. True: the "<" of that tag was consumed, and is not part
/// of the text.
bool EntryReader::readSpaceAndComments() {
    for (;;) {
        readSpace();
        if (peek() != '<')
            return false;
        reader_.get();
        int const kind = peek();
        if (kind != '!' && kind != '?') {
            cutWord_ = kind == CharReader::END;
            return kind != CharReader::END;
        }
        if (text_)
            text_->push_back('<');
        get();
        if (!readMarkup(kind)) {
            cutWord_ = true;
            return false;
        }
    }
}

} // namespace

bool ModelInFormatAccess::current(ModelInFormat& imf, std::string_view& keyword) {
    auto& ahead = imf.ahead_;
    if (ahead.keywordPos < 0)
        imf.nextKeyword();
    if (!ahead.loaded)
        return false;
    if (ahead.keywordPos > 0) {
        ahead.keyword.erase(0, static_cast<std::size_t>(ahead.keywordPos));
        ahead.keywordPos = 0;
        ahead.rawDiffers = false;
    }
    keyword = ahead.keyword;
    return true;
}

std::string_view ModelInFormatAccess::rawKeyword(ModelInFormat const& imf) {
    return imf.ahead_.rawDiffers ? imf.ahead_.raw : imf.ahead_.keyword;
}

bool ModelInFormatAccess::isBlockEnd(ModelInFormat& imf) {
    std::string_view keyword;
    return current(imf, keyword) && !imf.ahead_.quoted && keyword == "}";
}

bool ModelInFormatAccess::isBlockStart(ModelInFormat& imf) {
    std::string_view keyword;
    return current(imf, keyword) && !imf.ahead_.quoted && keyword == "{";
}

void ModelInFormatAccess::propagateBlockEnd(ModelInFormat& imf) {
    if (isBlockEnd(imf))
        ModelInFormat::setPropagateKeyword(std::string("}"));
}

bool ModelInFormatAccess::takePropagated(ModelInFormat& imf) {
    bool const propagated = isPropagated();
    if (propagated)
        imf.nextKeyword();
    return propagated;
}

void ModelInFormatAccess::setBlockEnd(ModelInFormat& imf, std::string_view raw) {
    auto& ahead = imf.ahead_;
    // The end of one block behind that of another, as that of most attributes, is there already.
    if (ahead.loaded && ahead.keywordPos == 0 && !ahead.quoted &&
        ahead.keyword == FormatTexts::END_OF_BLOCK &&
        (raw.empty() ? !ahead.rawDiffers
                     : ahead.rawDiffers && ahead.raw == raw && ahead.place == ModelInFormat::Place::Content))
        return;
    imf.drop();
    ahead.keyword = FormatTexts::END_OF_BLOCK;
    ahead.loaded = true;
    ahead.keywordPos = 0;
    if (raw.empty())
        return;
    ahead.raw = raw;
    ahead.rawDiffers = true;
    ahead.place = ModelInFormat::Place::Content;
}

void ModelInFormatAccess::consumeOfKeyword(ModelInFormat& imf, std::size_t count) {
    auto& ahead = imf.ahead_;
    if (!ahead.loaded)
        return;
    if (count < ahead.keyword.size())
        ahead.keywordPos = static_cast<int>(count);
    else
        imf.drop();
}

bool ModelInFormatAccess::skipEntry(ModelInFormat& imf) { return passEntry(imf, nullptr); }

bool ModelInFormatAccess::captureEntry(ModelInFormat& imf, std::string& text) {
    return passEntry(imf, &text);
}

bool ModelInFormatAccess::passEntry(ModelInFormat& imf, std::string* text) {
    using Place = ModelInFormat::Place;
    auto& ahead = imf.ahead_;
    std::string_view keyword;
    if (!current(imf, keyword))
        return !ahead.wordLost && !ahead.voxaOpen;
    std::string_view const raw = rawKeyword(imf);
    if (text)
        text->append(raw);
    EntryReader reader(imf.in_, text);
    bool complete = true;
    bool tagOpened = false;
    if (imf.format_ != ModelFormat::XmlV2) {
        complete = reader.readText(keyword, ahead.quoted);
        if (complete && text)
            reader.readSpace();
    } else {
        if (ahead.place == Place::Value)
            complete = reader.readValueEnd() && reader.readElement();
        else if (ahead.place == Place::Tag)
            complete = reader.readElement();
        else if (keyword == "{")
            complete = reader.readElementContent();
        else if (keyword.empty() && !(raw.size() > 1 && raw.ends_with('>')))
            reader.readStray();
        if (complete && text)
            tagOpened = reader.readSpaceAndComments();
    }
    imf.drop();
    ahead.place = tagOpened ? Place::Opened : Place::Content;
    if (reader.cutWord())
        ahead.wordLost = true;
    if (reader.metRootEnd()) {
        ahead.voxaOpen = false;
        ahead.ended = true;
    }
    if (!complete)
        imf.in_.setstate(std::ios_base::failbit | std::ios_base::eofbit);
    return complete;
}

bool ModelInFormatAccess::skipMarkup(std::istream& in, int kind) {
    return EntryReader(in, nullptr).readMarkup(kind);
}

} // namespace Zorvan::AttributeContainer
