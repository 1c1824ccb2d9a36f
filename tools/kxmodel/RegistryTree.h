// SPDX-License-Identifier: MIT
#pragma once

#include "Pairing.h"

#include <memory>
#include <string>
#include <vector>

namespace kxmodel {

/// The key that keeps the values of a container.
struct ContainerKey {
    std::shared_ptr<Zorvan::AttributeContainer::AttrContainer> container;
    Attributes attributes; ///< Those that belong into the registry; none of what is kept as text.
    std::string key;       ///< Below that of the root, which is empty.
    std::string path;      ///< How messages name the container.
    std::size_t parent = 0;
};

/// The key of every container of a tree, each behind that of its parent. A field has its registry name; the
/// children are in a key "~", which is in the list without a container, under their names, the second of
/// equal ones as "A[2]". Throws std::runtime_error when two keys or values would be the same, or a name
/// cannot be one.
std::vector<ContainerKey> keysOf(std::shared_ptr<Zorvan::AttributeContainer::AttrContainer> const& root);

/// Why the registry would not give back what a text, that of an attribute, says: its text form is not read as
/// what it was written for. Empty when it does.
std::string whyTextFails(Zorvan::AttributeContainer::Attribute& attribute, std::string const& text);
/// The same for the value that the attribute has.
std::string whyValueFails(Zorvan::AttributeContainer::Attribute& attribute);

} // namespace kxmodel
