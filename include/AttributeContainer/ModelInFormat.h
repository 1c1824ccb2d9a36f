// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>
#include <AttributeContainer/ModelFormat.h>

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

namespace Zorvan::AttributeContainer {

class VersionNum;

/// The tokenizer of the model format: recognises a stream's rendering, reads the document header and hands
/// out one keyword at a time. Values are read from the stream itself, by DataInFormat, behind the keyword
/// they belong to.
///
/// Readers on one stream nest: a new one takes over the look-ahead of the innermost reader of this thread,
/// when that reads the same stream, and gives it back when it is destroyed. They must be destroyed in the
/// reverse order of their construction, on the thread that made them. A reader throws nothing of its own;
/// malformed input shows as an empty or unknown keyword, or as the end of the input.
class KX_ATTRIBUTECONTAINER_API ModelInFormat {
public:
    /// Reads from `in`, which must outlive the reader. The format is Text until determineFormat() finds
    /// another.
    explicit ModelInFormat(std::istream& in);
    ~ModelInFormat();
    ModelInFormat(ModelInFormat const&) = delete;
    ModelInFormat& operator=(ModelInFormat const&) = delete;

    /// Recognises the rendering at the start of a document, stores it and returns it as a
    /// ModelFormat::Format. The lines that identify an XML document are consumed. A `ReadFromScope` takes the
    /// format from its context: set it there too.
    int determineFormat();

    /// The current keyword, loaded when there is none; nothing at the end of the input. Does not consume it.
    std::optional<std::string const> getKeyword();
    /// Loads the next keyword in place of the current one: the one that was propagated, else the next of the
    /// stream.
    void nextKeyword();

    /// The next character of a partly consumed keyword, or of the stream; the end of the input is EOF.
    int rawRead(bool consume);
    /// Consumes one character of the stream.
    void readBeforeBuf();
    /// Reads past the end of the line and drops the keyword. Returns whether the stream is still good.
    bool skipRestOfLine();
    /// Reads past the next "}", whether it is nested or quoted or not, and drops the keyword. Returns whether
    /// the stream is still good.
    bool skipToEndOfBlock();

    /// Reads the title at the start of a document, and in XML what leads to the versions or, without them,
    /// past the start tag of the root. The input's end leaves the title as far as it came.
    void readHeader(std::string& title);
    /// Reads the format version that may follow the title; without one `number` becomes a default VersionNum.
    void readVersion(VersionNum& number);
    /// Reads the version of the root model (only in the text rendering). Anything but "1.0" becomes "1.0"
    /// 0.0.0.0.
    void readRootModelVersion(VersionNum& number);
    /// Consumes the line of the root's start tag; false when it holds something else. Text has none: true.
    bool readVoxaStart();
    /// Consumes the line of the root's end tag, unless the keywords have met it already. Always true.
    bool readVoxaEnd();

    /// Sets the keyword that this thread's next nextKeyword() returns without reading; an empty one clears
    /// it. It is forgotten when the outermost reader of a stream ends, and set aside while another stream is
    /// read in between.
    static void setPropagateKeyword(std::optional<std::string const> keyword);
    /// Clears the propagated keyword of this thread.
    static void cleanPropagateKeyword();

private:
    friend class ReadFromScope;
    friend class ModelInFormatAccess;

    /// Where the stream stands in an XML document.
    enum class Place : std::uint8_t {
        Content, ///< outside of all tags
        Tag,     ///< in a start tag, behind its name or an attribute
        Value,   ///< inside the value of an attribute
        Opened   ///< behind the "<" of a tag, which was read to tell it from a comment
    };

    /// What is known of the stream ahead; passes as a whole from reader to reader.
    struct LookAhead {
        std::string keyword;
        std::string raw;     ///< the keyword as it stands in the stream, when it differs from `keyword`
        int keywordPos = -1; ///< -1: none loaded; n > 0: the first n characters were consumed by rawRead()
        bool loaded = false; ///< there is a keyword
        bool rawDiffers = false; ///< `raw` is the keyword's text in the stream
        bool quoted = false;     ///< the keyword was a quoted string of a text
        bool voxaOpen = false;   ///< the root's start tag was read, its end tag not yet
        bool ended = false;      ///< the root's end tag was read: nothing follows for any reader
        bool wordLost = false;   ///< the input ended inside a keyword
        Place place = Place::Content;
    };

    static void exchange(LookAhead& one, LookAhead& other) noexcept;
    void setFormat(ModelFormat::Format format) { format_ = format; }
    void drop();
    void loseWord();
    void readTextKeyword();
    bool readXmlToken();
    bool readTag(int first);
    void readStartTag();
    void readAttribute();

    std::istream& in_;
    LookAhead ahead_;
    std::optional<std::string> setAside_;
    ModelFormat::Format format_ = ModelFormat::Text;
    bool entersStream_ = true; ///< the reader around this one reads another stream, or there is none
    bool outermost_ = true;    ///< no reader around this one reads the same stream
};

} // namespace Zorvan::AttributeContainer
