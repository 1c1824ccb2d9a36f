// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>
#include <AttributeContainer/ModelFormat.h>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer {

class Version;
class WriteToScope;

/// Writes the blocks and keyword/value lines of a model document to a stream.
///
/// Names, keys and attribute texts are written as they are given; only strings written as values are quoted.
/// Each line break flushes the stream. Nothing is reported: a failure is the stream's state. The rendering is
/// `Text` until a `WriteToScope` sets another. A value between `startValue` and `endValue` is written by a
/// `DataOutFormat` on the same stream and in the same rendering:
///
///     mof.startBlock("Size").startValue("Width");
///     DataOutFormat<double>(mof.output(), format).put(0.5);
///     mof.endValue().endBlock();                          // text: "\nSize { \nWidth 0.5\n}"
class KX_ATTRIBUTECONTAINER_API ModelOutFormat {
public:
    /// Writes to `out`, which must outlive the writer.
    explicit ModelOutFormat(std::ostream& out);
    ModelOutFormat(ModelOutFormat const&) = delete;
    ModelOutFormat& operator=(ModelOutFormat const&) = delete;
    ~ModelOutFormat();

    /// The stream, for raw text between the structured calls.
    std::ostream& output() const noexcept { return out_; }

    /// Opens a block, or an XML element, `name`.
    ModelOutFormat& startBlock(std::string const& name);
    /// Opens an XML element with the attribute text `attributes`; does nothing in the text rendering, where
    /// nothing must close it either.
    ModelOutFormat& startBlock(std::string const& name, std::string const& attributes);
    /// Opens the block of an attribute; `typeName` has the form "Attr<...>".
    ModelOutFormat& startAttributeBlock(std::string const& typeName);
    /// Opens a block that announces the number of its elements. In the text rendering the number stands
    /// before the brace (`sizeInName`) or behind it.
    ModelOutFormat& startBlockWithSize(std::string const& name, std::uint64_t size, bool sizeInName);

    /// Begins a line with the keyword `key`.
    ModelOutFormat& startValue(std::string const& key);
    /// Begins an XML value element with further attributes; does nothing in the text rendering.
    ModelOutFormat& startValue(std::string const& key, std::string const& attributes);
    /// Begins a line whose key is user data: quoted in the text rendering, raw in XML.
    ModelOutFormat& startValueAsString(std::string const& key);
    /// Ends what one of the `startValue` operations began.
    ModelOutFormat& endValue();
    /// Closes the innermost open block. In XML an element must be open; without one nothing is written.
    ModelOutFormat& endBlock();

    /// Begins a document without versions.
    ModelOutFormat& writeHeader(std::string const& title);
    /// Begins a document with the format version and, in the text rendering, on request the root-model
    /// version. In XML the title stands unquoted unless it could not be read back like that.
    ModelOutFormat& writeHeader(std::string const& title, Version const& record, bool withRootModelVersion);
    /// Ends a document.
    ModelOutFormat& writeFooter();

    /// Writes `text` with the five characters that XML reserves as entities.
    static void encodeXMLEntities(std::ostream& out, std::string const& text);

private:
    friend class WriteToScope;

    void setFormat(ModelFormat::Format format) noexcept { format_ = format; }
    bool isXml() const noexcept { return format_ == ModelFormat::Xml || format_ == ModelFormat::XmlV2; }

    std::ostream& out_;
    std::vector<std::string> blockNames_; ///< of the open XML elements; nothing is allocated without any
    ModelFormat::Format format_ = ModelFormat::Text;
};

} // namespace Zorvan::AttributeContainer
