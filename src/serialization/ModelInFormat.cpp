// SPDX-License-Identifier: MIT
#include <AttributeContainer/ModelInFormat.h>

#include "foundation/PerThread.h"
#include "serialization/CharReader.h"
#include "serialization/FormatTexts.h"
#include "serialization/ModelInFormatAccess.h"
#include "serialization/QuotedText.h"

#include <AttributeContainer/DataInFormat.h>

#include <algorithm>
#include <istream>
#include <string_view>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

namespace {

// How a comment begins; the writer puts a blank behind it, others need not.
constexpr std::string_view COMMENT_START = "<!--";
// The longest line that is looked at where a tag of the root is expected.
constexpr std::size_t MAX_ROOT_LINE = 99;

/// The live readers of a thread, in the order of their construction, and the keyword that is handed to the
/// next of them. The vector and the string keep their capacity: readers come and go for each attribute.
struct ReaderThread {
    std::vector<ModelInFormat*> readers;
    std::string propagated;
    bool isPropagated = false;
};

ReaderThread& thisThread() { return PerThread<ReaderThread>::get(); }

void forgetPropagated(ReaderThread& thread) {
    thread.isPropagated = false;
    thread.propagated.clear();
}

void skipSpace(CharReader& reader) {
    if (reader.good())
        reader.skipSpace();
}

void skipLine(CharReader& reader) {
    if (reader.good() && reader.skipWhile([](int c) { return c != '\n'; }) != CharReader::END)
        reader.get();
}

/// A line without its line feed, which is consumed. Nothing to read, or more than `limit` characters, is a
/// failure.
std::string readLine(CharReader& reader, std::size_t limit = std::string::npos) {
    std::string line;
    std::size_t left = limit;
    int const next = reader.readWhile(line, [&left](int c) { return c != '\n' && left-- > 0; });
    if (next == '\n')
        reader.get();
    else if (next != CharReader::END || line.empty())
        reader.setState(std::ios_base::failbit);
    return line;
}

/// A title in double quotes in an XML header: escaped, then encoded.
std::string readEncodedTitle(CharReader& reader) {
    std::string title;
    reader.get();
    if (reader.readWhile(title, [](int c) { return c != '"' && c != '\n'; }) == '"')
        reader.get();
    decodeEntities(title);
    unescape(title);
    return title;
}

/// A title without quotes: what stands on one line between "<!-- ", whose blank was consumed, and " -->".
std::string readPlainTitle(CharReader& reader, bool afterBlank) {
    // In an empty comment one blank is part of both its ends.
    std::string title(afterBlank ? 1 : 0, ' ');
    while (reader.good()) {
        int const c = reader.peek();
        if (c == '\n' || c == CharReader::END)
            break;
        title.push_back(static_cast<char>(reader.get()));
        if (c == '>' && title.ends_with(FormatTexts::XML_END_COMMENT)) {
            title.resize(title.size() - FormatTexts::XML_END_COMMENT.size());
            break;
        }
    }
    if (afterBlank && !title.empty())
        title.erase(0, 1);
    return title;
}

} // namespace

void ModelInFormat::exchange(LookAhead& one, LookAhead& other) noexcept {
    one.keyword.swap(other.keyword);
    if (one.rawDiffers || other.rawDiffers)
        one.raw.swap(other.raw);
    std::swap(one.keywordPos, other.keywordPos);
    std::swap(one.loaded, other.loaded);
    std::swap(one.rawDiffers, other.rawDiffers);
    std::swap(one.quoted, other.quoted);
    std::swap(one.voxaOpen, other.voxaOpen);
    std::swap(one.ended, other.ended);
    std::swap(one.wordLost, other.wordLost);
    std::swap(one.place, other.place);
}

ModelInFormat::ModelInFormat(std::istream& in) : in_(in) {
    ReaderThread& thread = thisThread();
    auto& readers = thread.readers;
    readers.push_back(this);
    if (readers.size() < 2)
        return;
    ModelInFormat& enclosing = *readers[readers.size() - 2];
    if (&enclosing.in_ == &in_) {
        exchange(ahead_, enclosing.ahead_);
        outermost_ = entersStream_ = false;
        return;
    }
    outermost_ = std::none_of(readers.begin(), readers.end() - 1,
                              [this](ModelInFormat const* reader) { return &reader->in_ == &in_; });
    if (thread.isPropagated) {
        setAside_ = std::move(thread.propagated);
        forgetPropagated(thread);
    }
}

ModelInFormat::~ModelInFormat() {
    ReaderThread& thread = thisThread();
    auto& readers = thread.readers;
    if (!readers.empty() && readers.back() == this)
        readers.pop_back();
    else
        std::erase(readers, this);
    if (entersStream_) {
        forgetPropagated(thread);
        if (setAside_) {
            thread.propagated = std::move(*setAside_);
            thread.isPropagated = true;
        }
    }
    if (!readers.empty() && &readers.back()->in_ == &in_)
        exchange(ahead_, readers.back()->ahead_);
}

int ModelInFormat::determineFormat() {
    CharReader reader(in_);
    format_ = ModelFormat::Text;
    skipSpace(reader);
    if (reader.good() && reader.peek() == '<' && readLine(reader) == FormatTexts::XML_HEADER &&
        reader.good() && readLine(reader) == FormatTexts::XML_V2_COMMENT)
        format_ = ModelFormat::XmlV2;
    return format_;
}

std::optional<std::string const> ModelInFormat::getKeyword() {
    std::string_view keyword;
    if (!ModelInFormatAccess::current(*this, keyword))
        return std::nullopt;
    return std::string(keyword);
}

void ModelInFormat::nextKeyword() {
    drop();
    if (ahead_.ended)
        return;
    ReaderThread& thread = thisThread();
    if (thread.isPropagated) {
        ahead_.keyword = thread.propagated;
        ahead_.loaded = true;
        ahead_.keywordPos = 0;
        forgetPropagated(thread);
        return;
    }
    CharReader reader(in_);
    if (ahead_.place != Place::Opened)
        skipSpace(reader);
    if (!reader.good())
        return;
    ahead_.loaded = true;
    ahead_.keywordPos = 0;
    if (format_ != ModelFormat::XmlV2) {
        readTextKeyword();
        return;
    }
    while (!readXmlToken()) {
    }
}

/// No keyword is loaded.
void ModelInFormat::drop() {
    ahead_.keyword.clear();
    ahead_.loaded = false;
    ahead_.keywordPos = -1;
    ahead_.quoted = false;
    ahead_.rawDiffers = false;
}

/// The input ended inside a keyword.
void ModelInFormat::loseWord() {
    drop();
    ahead_.wordLost = true;
}

/// Reads a keyword of a text, of which at least one character is there.
void ModelInFormat::readTextKeyword() {
    CharReader reader(in_);
    std::string& keyword = ahead_.keyword;
    auto const isInWord = [](int next) { return !CharReader::isSpace(next); };
    int c = reader.peek();
    if (c != '"' && c != '{' && c != '}' && c != CharReader::END && isInWord(c)) {
        if (reader.readWhile(keyword, isInWord) == CharReader::END)
            loseWord();
        return;
    }
    c = reader.get();
    if (c != '"') {
        keyword.push_back(static_cast<char>(c));
        if (c != '{' && c != '}' && reader.readWhile(keyword, isInWord) == CharReader::END)
            loseWord();
        return;
    }
    ahead_.quoted = true;
    ahead_.rawDiffers = true;
    std::string& raw = ahead_.raw;
    raw.assign(1, '"');
    for (c = reader.get(); c != '"' && c != CharReader::END; c = reader.get()) {
        raw.push_back(static_cast<char>(c));
        if (c == '\\') {
            c = reader.get();
            if (c == CharReader::END)
                break;
            raw.push_back(static_cast<char>(c));
        }
        keyword.push_back(static_cast<char>(c));
    }
    raw.push_back('"');
    if (c == CharReader::END)
        loseWord();
}

/// Reads a keyword of an XML document; it stays empty where the input is malformed. False: what was read
/// stands between two entries, and the keyword is what follows.
bool ModelInFormat::readXmlToken() {
    CharReader reader(in_);
    std::string& raw = ahead_.raw;
    raw.clear();
    ahead_.rawDiffers = true;
    int c = '<';
    if (ahead_.place != Place::Opened) {
        skipSpace(reader);
        if (!reader.good()) {
            drop();
            return true;
        }
        c = reader.get();
    }
    raw.push_back(static_cast<char>(c));
    if (c == '<') {
        ahead_.place = Place::Content;
        return readTag(reader.get());
    }
    if (c == '"') { // the end of a value, and with "/>" behind it of the entry
        ahead_.place = Place::Tag;
        reader.readWhile(raw, CharReader::isSpace);
        c = reader.good() ? reader.get() : CharReader::END;
        if (c == '/' && reader.get() != CharReader::END) {
            ahead_.place = Place::Content;
            return false;
        }
        if (!reader.good()) {
            loseWord();
            return true;
        }
        raw.push_back(static_cast<char>(c));
    }
    if (c == '>' && ahead_.place != Place::Value) {
        ahead_.keyword = FormatTexts::START_OF_BLOCK;
        ahead_.place = Place::Content;
    } else if (c == '/' && ahead_.place == Place::Tag && reader.peek() == '>') {
        raw.push_back(static_cast<char>(reader.get()));
        ahead_.place = Place::Content;
    }
    return true;
}

/// Reads on behind the "<" of a tag and its `first` character. Returns what readXmlToken() does.
bool ModelInFormat::readTag(int first) {
    CharReader reader(in_);
    std::string& raw = ahead_.raw;
    if (first == CharReader::END) {
        loseWord();
        return true;
    }
    if (first == '!' || first == '?') {
        if (ModelInFormatAccess::skipMarkup(in_, first))
            return false;
        loseWord();
        return true;
    }
    raw.push_back(static_cast<char>(first));
    if (first != '/') {
        readStartTag();
        return true;
    }
    if (reader.readWhile(raw, [](int c) { return c != '>'; }) == CharReader::END) {
        loseWord();
        return true;
    }
    raw.push_back(static_cast<char>(reader.get()));
    if (raw == FormatTexts::XML_ROOT_END_TAG) {
        cleanPropagateKeyword();
        drop();
        ahead_.voxaOpen = false;
        ahead_.ended = true;
    } else {
        ahead_.keyword = FormatTexts::END_OF_BLOCK;
    }
    return true;
}

/// Reads the rest of a start tag, of which `raw` holds "<" and a character, up to its ">" or into its value.
void ModelInFormat::readStartTag() {
    CharReader reader(in_);
    std::string& raw = ahead_.raw;
    auto const inName = [](int c) { return !CharReader::isSpace(c) && c != '>' && c != '/' && c != '<'; };
    if (!inName(static_cast<unsigned char>(raw.back())))
        return; // what follows "<" is no name
    ahead_.place = Place::Tag;
    int next = reader.readWhile(raw, inName);
    ahead_.keyword.assign(raw, 1);
    if (CharReader::isSpace(next))
        next = reader.readWhile(raw, CharReader::isSpace);
    if (next == CharReader::END) {
        loseWord();
        return;
    }
    if (next == '>') {
        if (ahead_.keyword == FormatTexts::XML_ROOT_NAME)
            ahead_.voxaOpen = true;
        return;
    }
    if (next != '/') {
        readAttribute();
        return;
    }
    // An element that has neither value nor content is nothing that a writer makes.
    ahead_.keyword.clear();
    raw.push_back(static_cast<char>(reader.get()));
    if (reader.peek() == '>') {
        raw.push_back(static_cast<char>(reader.get()));
        ahead_.place = Place::Content;
    }
}

/// Reads the attribute behind an element's name, into its value; a type becomes part of the keyword.
void ModelInFormat::readAttribute() {
    CharReader reader(in_);
    std::string& raw = ahead_.raw;
    std::size_t const start = raw.size();
    int next = reader.readWhile(raw, [](int c) { return c != '"' && c != '<' && c != '>'; });
    std::string name(raw, start);
    std::erase_if(name, [](char c) { return CharReader::isSpace(static_cast<unsigned char>(c)); });
    if (next == '"') {
        raw.push_back(static_cast<char>(reader.get()));
        ahead_.place = Place::Value;
        if (name == "value=")
            return;
        if (name == "type=") {
            std::size_t const typeStart = raw.size();
            next = reader.readWhile(raw, [](int c) { return c != '"'; });
            if (next == '"') {
                ahead_.keyword.push_back('<');
                ahead_.keyword.append(raw, typeStart);
                ahead_.keyword.push_back('>');
                raw.push_back(static_cast<char>(reader.get()));
                ahead_.place = Place::Tag;
                return;
            }
        }
    }
    ahead_.keyword.clear();
    if (next == CharReader::END)
        loseWord();
}

int ModelInFormat::rawRead(bool consume) {
    LookAhead& ahead = ahead_;
    auto const position = static_cast<std::size_t>(ahead.keywordPos);
    if (ahead.keywordPos >= 1 && ahead.loaded && position < ahead.keyword.size()) {
        int const c = static_cast<unsigned char>(ahead.keyword[position]);
        if (consume) {
            ++ahead.keywordPos;
            if (position + 1 == ahead.keyword.size())
                drop();
        }
        return c;
    }
    CharReader reader(in_);
    return consume ? reader.get() : reader.peek();
}

void ModelInFormat::readBeforeBuf() { CharReader(in_).get(); }

bool ModelInFormat::skipRestOfLine() {
    CharReader reader(in_);
    skipLine(reader);
    drop();
    ahead_.place = Place::Content;
    return reader.good();
}

bool ModelInFormat::skipToEndOfBlock() {
    CharReader reader(in_);
    if (reader.good() && reader.skipWhile([](int c) { return c != '}'; }) != CharReader::END)
        reader.get();
    drop();
    ahead_.place = Place::Content;
    return reader.good();
}

void ModelInFormat::readHeader(std::string& title) {
    if (format_ != ModelFormat::XmlV2) {
        title = DataInFormat<std::string>(in_, format_).take();
        return;
    }
    CharReader reader(in_);
    skipSpace(reader);
    for (std::size_t i = 0; i < COMMENT_START.size() && reader.good(); ++i)
        reader.get();
    bool const afterBlank = reader.good() && reader.peek() == ' ';
    if (afterBlank)
        reader.get();
    int const first = reader.good() ? reader.peek() : CharReader::END;
    if (first == '\'')
        title = DataInFormat<std::string>(in_, format_).take();
    else if (first == '"')
        title = readEncodedTitle(reader);
    else
        title = readPlainTitle(reader, afterBlank);
    skipLine(reader);
    if (reader.good() && readLine(reader) == FormatTexts::XML_NEXT_ROOT && reader.good())
        ahead_.voxaOpen = equalsIgnoringCase(readLine(reader), FormatTexts::XML_ROOT_START_TAG);
}

void ModelInFormat::readVersion(VersionNum& number) {
    number = DataInFormat<VersionNum>(in_, format_).take();
}

void ModelInFormat::readRootModelVersion(VersionNum& number) {
    if (format_ == ModelFormat::Text)
        number = DataInFormat<VersionNum>(in_, format_).take();
    if (number.name != "1.0")
        number = VersionNum("1.0", 0, 0, 0, 0, 0, std::string());
}

bool ModelInFormat::readVoxaStart() {
    if (format_ != ModelFormat::XmlV2)
        return true;
    CharReader reader(in_);
    skipSpace(reader);
    bool const found =
        reader.good() && equalsIgnoringCase(readLine(reader, MAX_ROOT_LINE), FormatTexts::XML_ROOT_START_TAG);
    skipSpace(reader);
    if (found)
        ahead_.voxaOpen = true;
    return found;
}

bool ModelInFormat::readVoxaEnd() {
    if (format_ != ModelFormat::XmlV2 || ahead_.ended)
        return true;
    CharReader reader(in_);
    skipSpace(reader);
    if (reader.good() && readLine(reader, MAX_ROOT_LINE) == FormatTexts::XML_ROOT_END_TAG) {
        drop();
        ahead_.voxaOpen = false;
        ahead_.ended = true;
    }
    skipSpace(reader);
    return true;
}

void ModelInFormat::setPropagateKeyword(std::optional<std::string const> keyword) {
    ReaderThread& thread = thisThread();
    forgetPropagated(thread);
    if (keyword && !keyword->empty()) {
        thread.propagated = *keyword;
        thread.isPropagated = true;
    }
}

void ModelInFormat::cleanPropagateKeyword() { forgetPropagated(thisThread()); }

bool ModelInFormatAccess::isPropagated() { return thisThread().isPropagated; }

} // namespace Zorvan::AttributeContainer
