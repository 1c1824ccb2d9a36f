// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ModelFormat.h>

#include <optional>
#include <string>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// Translates text that was kept from a document in one rendering, a run of entries, into the other
/// rendering:
///
///     Attr<int> {              <Attr type="int">
///     Name "count"             <Name value="'count'" />
///     Value 5                  <Value value="5" />
///     }                        </Attr>
///
/// Every line of the result ends with a line feed and none stands before the first, as ModelInFormatAccess
/// keeps such text; only text content of an element has none behind it. What this library wrote comes back
/// from the other rendering unchanged to the byte. Indentation, empty lines and comments are not kept.
/// Malformed text is translated as far as it goes, what has no counterpart as text content of an element or
/// as a quoted string: the result is balanced and properly quoted or encoded in its rendering, whatever the
/// input. Equal renderings: the text as it is. Nothing: the name of a class is no XML name, so that the text
/// has no XML form.
std::optional<std::string> translateRawText(std::string_view text, ModelFormat::Format from,
                                            ModelFormat::Format to);

} // namespace Zorvan::AttributeContainer
