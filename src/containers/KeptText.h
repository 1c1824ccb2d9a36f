// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/ModelFormat.h>

#include <iosfwd>
#include <string>

namespace Zorvan::AttributeContainer {

/// Writes text that was kept from a document in one rendering into a document of another (or the same)
/// rendering. In text it begins with a line break, as every line does, and leaves its own last line end to
/// the line behind it. `StreamFailure` when the text has no form in the rendering.
[[nodiscard]] Result writeKeptText(std::ostream& out, std::string const& text, ModelFormat::Format from,
                                   ModelFormat::Format to);

} // namespace Zorvan::AttributeContainer
