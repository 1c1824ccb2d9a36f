// SPDX-License-Identifier: MIT
#pragma once

#include "containers/ReadingScope.h"
#include "serialization/ModelInFormatAccess.h"
#include "serialization/ReadOutcome.h"

#include <AttributeContainer/ModelInFormat.h>
#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Zorvan::AttributeContainer {

class AttributeBlock;

/// What the reader of a member's block does after an entry. Content is read by the loop over the entries
/// itself: documents nest, and each function on the way takes room on the stack.
enum class EntryStep { GoOn, Content, Fail };

/// Reads the container part of a block into a container: attributes, links, fields.
///
/// It ends with the part's own "}" current and nothing propagated: the one that belongs to its
/// "AttrContainer" opener, or, without an opener, the one of the enclosing block.
class ContainerReader {
public:
    ContainerReader(AttrContainer& container, std::istream& in,
                    std::shared_ptr<ReadContextBase const> const& context);

    [[nodiscard]] Result read();

    /// Whether a keyword begins an entry of a container part.
    static bool isEntry(ModelInFormat const& imf, std::string_view keyword);
    /// Whether a keyword is the opener of a container part.
    static bool isOpener(ModelInFormat const& imf, std::string_view keyword);

    /// A read that cannot go on: clears what is propagated.
    [[nodiscard]] static Result failed(Result error, std::istream& in);
    [[nodiscard]] static Result tooDeep(char const* file, int line, std::istream& in);
    /// Loads the keyword behind a block's name. True: it is the "{". The end of the input in its place fails
    /// the stream.
    [[nodiscard]] static bool opensBlock(ModelInFormat& imf, std::istream& in);
    /// Passes over an entry that nobody knows. `hasBlock` becomes true when it is, or holds, a block.
    static void passUnknown(ModelInFormat& imf, ModelFormat::Format format, bool& hasBlock);
    /// Reads the class and the name with which the block of a member begins, and loads the next keyword.
    /// False: they are not there, or not both.
    [[nodiscard]] static bool readClassLine(ModelInFormat& imf, std::istream& in, ModelFormat::Format format,
                                            std::string& className, std::string& name);

private:
    [[nodiscard]] Result readPart();
    /// True: go on with the current keyword. False: `fatal_` ends the read.
    [[nodiscard]] bool readEntry(std::string_view keyword);
    [[nodiscard]] bool readPlainAttributes(AttrType type);
    [[nodiscard]] bool openNextBlock(AttributeBlock& block, AttrType& type, std::string& name);
    [[nodiscard]] bool readPlainAttribute(AttributeBlock& block, AttrType type, std::string const& name);
    [[nodiscard]] bool readAttributeBlock(AttrType type, std::string const& typeName);
    [[nodiscard]] bool readNamedAttribute(AttrType type, std::string const& typeName);
    [[nodiscard]] bool readSubContainer();
    [[nodiscard]] bool readLinks();
    void skipUnknown(std::string_view keyword);

    std::shared_ptr<Attribute> makeTemporary(AttrType type, std::string const& typeName,
                                             std::string const& name);
    bool apply(std::string const& name, std::shared_ptr<Attribute> const& temporary, AttrType type);
    void takeOver(Attribute& existing, Attribute const& temporary, std::string const& name);
    void addCustom(std::string const& name, std::shared_ptr<Attribute> const& temporary);
    bool isPlaceholder();
    [[nodiscard]] bool endsProperly();
    [[nodiscard]] bool goesOn();
    [[nodiscard]] bool endsAtChild(std::string_view keyword) const;

    AttrContainer& container_;
    std::istream& in_;
    std::shared_ptr<ReadContextBase const> const& context_;
    ModelInFormat imf_;
    ReadingScope reading_;
    ReadOutcome outcome_;
    Result fatal_;
    std::optional<bool> isPlaceholder_; ///< Once somebody has asked.
    bool wasOpened_ = false;
    std::size_t numHeads_ = 0;  ///< Of attributes that were read ahead behind others.
    bool hasReadBlock_ = false; ///< A document without any is none.
};

} // namespace Zorvan::AttributeContainer
