// SPDX-License-Identifier: MIT
#pragma once

#include "serialization/AreaReader.h"

#include <AttributeContainer/ModelFormat.h>

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Zorvan::AttributeContainer {

class ModelInFormat;

/// Reads a block of an attribute ahead, in the characters that the stream holds ready, when it is written as
/// this library writes it: the name, the value or none, the end, and nothing else.
///
///     AttributeBlock block(in, imf, format);
///     if (block.open(name) && (!block.hasValue() || (read(block.area()) && block.closeValue())))
///         block.commit();
///
/// Until commit(), nothing has happened: every other block is read keyword by keyword.
class AttributeBlock {
public:
    /// The stream stands behind the current keyword of `imf`, which is the block's, or the end of another.
    AttributeBlock(std::istream& in, ModelInFormat& imf, ModelFormat::Format format);

    /// Reads the type between the angle brackets of a block's keyword that comes next, when the keyword
    /// before it is the end of a block and nothing foreign stands in between. The text lives as long as the
    /// area.
    [[nodiscard]] bool takeType(std::string_view& typeName);
    /// Takes what `openedAs` gave for another block when it comes next, and reads on to the value, or past
    /// the end of a block without one. False: nothing was taken, and the block may be read in the other way.
    [[nodiscard]] bool openAgain(std::string_view openedAs);
    /// Reads up to the value, or past the end of a block without one.
    [[nodiscard]] bool open(std::string& name);
    /// The area stands at a value.
    bool hasValue() const { return hasValue_; }
    AreaReader& area() { return area_; }
    /// The text of the block up to behind its name, as it stands in the stream. It lives as long as the area.
    std::string_view openedAs() const { return {begin_, static_cast<std::size_t>(nameEnd_ - begin_)}; }
    /// Reads the end of the block behind the value.
    [[nodiscard]] bool closeValue();
    /// Consumes the block; its end is the current keyword then.
    void commit();

private:
    bool openText(std::string& name);
    bool openXml(std::string& name);
    bool openValueText();
    bool openValueXml();
    bool closeElement();
    bool isXml() const { return format_ == ModelFormat::XmlV2; }

    std::istream& in_;
    ModelInFormat& imf_;
    ModelFormat::Format format_;
    AreaReader area_;
    char const* begin_;
    char const* nameEnd_;
    bool hasTakenType_ = false;
    bool hasValue_ = false;
};

} // namespace Zorvan::AttributeContainer
