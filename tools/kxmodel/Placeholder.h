// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/WtAttrContainer.h>

#include <cstddef>
#include <string>

namespace kxmodel {

/// Whether a container stands in for one whose class the library does not know.
bool isPlaceholder(Zorvan::AttributeContainer::AttrContainer const& container);

/// The class that documents name: for a placeholder the unknown one.
std::string const& documentClassOf(Zorvan::AttributeContainer::AttrContainer const& container);

/// The length of what a placeholder keeps as text, beside its members.
std::size_t numBytesKept(Zorvan::AttributeContainer::AttrContainer const& container);

/// Whether text is all that there is of a placeholder: its attributes do not say what the document says.
bool isKeptAsText(Zorvan::AttributeContainer::AttrContainer const& container);

/// What a placeholder would write in the text rendering, which tells two of them apart whatever rendering
/// they were read from. Throws std::runtime_error when it cannot be written.
std::string textOfPlaceholder(Zorvan::AttributeContainer::AttrContainer& container);

} // namespace kxmodel
