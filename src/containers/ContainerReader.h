// SPDX-License-Identifier: MIT
#pragma once

#include "containers/ReadingScope.h"
#include "serialization/ModelInFormatAccess.h"
#include "serialization/ReadOutcome.h"

#include <AttributeContainer/ModelInFormat.h>
#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/ReadFromScope.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Zorvan::AttributeContainer {

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

private:
    /// True: go on with the current keyword. False: `fatal_` ends the read.
    [[nodiscard]] bool readEntry(std::string_view keyword);
    [[nodiscard]] bool readAttributeBlock(AttrType type, std::string const& typeName);
    [[nodiscard]] bool readNamedAttribute(AttrType type, std::string const& typeName);
    [[nodiscard]] bool readSubContainer();
    [[nodiscard]] bool readLinks();
    void skipUnknown(std::string_view keyword);

    std::shared_ptr<Attribute> makeTemporary(AttrType type, std::string const& typeName,
                                             std::string const& name);
    void apply(std::string const& name, std::shared_ptr<Attribute> const& temporary);
    void takeOver(Attribute& existing, Attribute const& temporary);
    void addCustom(std::string const& name, std::shared_ptr<Attribute> const& temporary);
    [[nodiscard]] bool endsProperly();

    AttrContainer& container_;
    std::istream& in_;
    std::shared_ptr<ReadContextBase const> const& context_;
    ReadFromScope scope_;
    ModelInFormat& imf_;
    ReadingScope reading_;
    ReadOutcome outcome_;
    Result fatal_;
    bool wasOpened_ = false;
    bool hasReadAnything_ = false;
};

} // namespace Zorvan::AttributeContainer
