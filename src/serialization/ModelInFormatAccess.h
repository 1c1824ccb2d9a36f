// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ModelInFormat.h>

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// What the library's own readers know of a ModelInFormat beyond its public interface.
class ModelInFormatAccess {
public:
    /// No enclosing reader reads the same stream.
    static bool isOutermost(ModelInFormat const& imf) { return imf.outermost_; }
    /// The stream stands inside the value attribute of the current keyword (XML).
    static bool insideValue(ModelInFormat const& imf) {
        return imf.ahead_.place == ModelInFormat::Place::Value;
    }
    /// The stream stands inside the start tag of the current keyword, behind its name or type (XML).
    static bool insideTag(ModelInFormat const& imf) { return imf.ahead_.place == ModelInFormat::Place::Tag; }
    /// The stream stands outside of all tags, and its document goes on.
    static bool betweenTags(ModelInFormat const& imf) {
        return imf.ahead_.place == ModelInFormat::Place::Content && !imf.ahead_.ended;
    }
    /// The input ended inside a keyword, which was lost.
    static bool wordLost(ModelInFormat const& imf) { return imf.ahead_.wordLost; }
    /// The root's start tag was read and its end tag was not (XML): the end of the input would be premature.
    static bool voxaOpen(ModelInFormat const& imf) { return imf.ahead_.voxaOpen; }
    /// The root's end tag was read (XML).
    static bool ended(ModelInFormat const& imf) { return imf.ahead_.ended; }

    /// The current keyword without a copy; loads one like getKeyword(), false at the end of the input. Valid
    /// until the reader, or one nested in it, loads another.
    static bool current(ModelInFormat& imf, std::string_view& keyword);
    /// The current keyword was a quoted string of a text: data, not a keyword, whatever it spells.
    static bool keywordQuoted(ModelInFormat const& imf) { return imf.ahead_.quoted; }
    /// The current keyword as it stood in the stream (XML: from the "<" of its tag on; text: with its
    /// quotes).
    static std::string_view rawKeyword(ModelInFormat const& imf);
    /// The current keyword, loaded when there is none, is the "}" that ends a block.
    static bool isBlockEnd(ModelInFormat& imf);
    /// The current keyword, loaded when there is none, is the "{" that opens a block.
    static bool isBlockStart(ModelInFormat& imf);

    /// A keyword is propagated on this thread.
    static bool isPropagated();
    /// When "}" is current, propagates it, as readers do whose block's end the enclosing reader has to see.
    static void propagateBlockEnd(ModelInFormat& imf);
    /// When a keyword is propagated, makes it the current one, so that nothing is left behind for other
    /// readers.
    static bool takePropagated(ModelInFormat& imf);
    /// The rendering to read from here on.
    static void setFormat(ModelInFormat& imf, ModelFormat::Format format) { imf.setFormat(format); }
    /// Forgets the current keyword without reading another.
    static void dropKeyword(ModelInFormat& imf) { imf.drop(); }
    /// Makes the "}" that ends a block the current keyword: the stream was read up to behind it. `raw` is the
    /// end tag as it stood there (XML).
    static void setBlockEnd(ModelInFormat& imf, std::string_view raw);
    /// Marks the first `count` characters of the current keyword as consumed, for rawRead().
    static void consumeOfKeyword(ModelInFormat& imf, std::size_t count);

    /// Passes over the entry that the current keyword begins, whole, whatever it is: a keyword line to the
    /// end of the line, a block or element to its end. No keyword is loaded afterwards. A "}" that closes the
    /// enclosing block is not passed. False, with failbit and eofbit set: the input ended inside the entry.
    /// Each call makes progress.
    static bool skipEntry(ModelInFormat& imf);
    /// skipEntry() that appends the entry's text as it stands in the stream, with the white space (XML: and
    /// comments) behind it: the texts of consecutive entries add up to the text of the block from its first
    /// keyword on.
    static bool captureEntry(ModelInFormat& imf, std::string& text);

    /// Reads past a comment, a processing instruction or a declaration of XML, from behind its "<" and
    /// `kind`, the "!" or "?" that follows. False, with the stream failed: the input ended first.
    static bool skipMarkup(std::istream& in, int kind);

private:
    static bool passEntry(ModelInFormat& imf, std::string* text);
};

} // namespace Zorvan::AttributeContainer
