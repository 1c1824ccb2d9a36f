// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace kxmodel {

/// Whether a UTF-8 text is a name by the rules of XML 1.0, of an element for example.
bool isXmlName(std::string_view text);

/// Whether every character of a UTF-8 text may stand in an XML 1.0 document. Most control characters may not.
bool isXmlText(std::string_view text);

} // namespace kxmodel
