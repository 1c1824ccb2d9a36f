// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <cstdint>
#include <string>

namespace Zorvan::AttributeContainer {

/// The fixed texts of the model format, and the names of its renderings.
///
/// The strings are ready before any static initialiser of an application runs and are never destroyed.
class KX_ATTRIBUTECONTAINER_API ModelFormat {
public:
    /// A rendering of the model format. Writers treat every other value as `Text`.
    enum Format : std::int32_t {
        Text = 0, ///< nested blocks in braces, one keyword a line
        Xml = 1,  ///< XML for other programs; strings in double quotes; there is no reader for it
        XmlV2 = 2 ///< XML "v. 2": strings in apostrophes, so that a value fits into an attribute; written and
                  ///< read
    };

    static constexpr wchar_t START_OF_BLOCK = L'{';
    static constexpr wchar_t END_OF_BLOCK = L'}';
    static std::string const& START_OF_BLOCK_STR;
    static std::string const& END_OF_BLOCK_STR;

    static std::string const& XML_HEADER;
    static std::string const& XML_V2_COMMENT;
    static std::string const& XML_NEXT_ROOT;
    static std::string const& XML_NEXT_VERSION;
    static std::string const& XML_NEXT_ROOT_MODEL; ///< never written
    static std::string const& XML_START_COMMENT;   ///< ends in a blank
    static std::string const& XML_END_COMMENT;     ///< begins with a blank
    static std::string const& XML_ROOT_START_TAG;
    static std::string const& XML_ROOT_END_TAG;
    static std::string const& XML_FOOTER;
};

} // namespace Zorvan::AttributeContainer
