// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/WtAttrContainer.h>
#include <AttributeContainer/WtAttribute.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kxmodel {

/// The class of a container as the document names it, on one line; " (unknown class)" follows for a
/// placeholder.
std::string classTextOf(Zorvan::AttributeContainer::AttrContainer const& container);

/// The type of an attribute as messages name it: "int" for "Attr<int>".
std::string_view shortTypeOf(Zorvan::AttributeContainer::Attribute const& attribute);

/// The value in the text form of documents; unlike the display text it has all digits and quotes strings.
std::string valueTextOf(Zorvan::AttributeContainer::Attribute& attribute);

/// The same, but a string stands bare, as it is.
std::string bareTextOf(Zorvan::AttributeContainer::Attribute& attribute);

/// A new attribute of the same type with the value that a text means, a string bare, anything else as
/// documents have it. Empty when the text is not wholly such a value: a part of it is left over, or a number
/// is out of range.
std::shared_ptr<Zorvan::AttributeContainer::Attribute>
parseValue(Zorvan::AttributeContainer::Attribute& attribute, std::string const& text);

/// A persistent link as documents have it; strings are quoted.
struct LinkText {
    std::string kind; ///< "pre-observer" or "post-observer"
    std::string path;
    std::string priority;
    std::string action;
};

/// The persistent links in the order of the document, those with an action that this program does not know
/// too.
std::vector<LinkText> linksOf(Zorvan::AttributeContainer::Observable& observable);

} // namespace kxmodel
