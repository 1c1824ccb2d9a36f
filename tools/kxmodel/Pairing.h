// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/WtAttrContainer.h>
#include <AttributeContainer/WtAttribute.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace kxmodel {

/// A member of a container under the name and the ordinal that paths have for it (see appendStep).
template <class T>
struct Named {
    std::shared_ptr<T> item;
    std::string name;
    std::size_t ordinal = 1;
};

using Attributes = std::vector<Named<Zorvan::AttributeContainer::Attribute>>;
using Containers = std::vector<Named<Zorvan::AttributeContainer::AttrContainer>>;

/// The fields and the child objects of a container; empty slots are left out.
struct Members {
    Containers fields;
    Containers children;
};

Attributes attributesOf(Zorvan::AttributeContainer::AttrContainer& container);
Members membersOf(Zorvan::AttributeContainer::AttrContainer& container);

constexpr std::size_t noPartner = static_cast<std::size_t>(-1);

/// Which members of two lists belong together, by their positions.
struct Pairing {
    std::vector<std::size_t> partners; ///< Of each member of the first list, or `noPartner`.
    std::vector<std::size_t> unpaired; ///< Those of the second list that have no partner, in their order.
};

/// The n-th of several with one name belongs to the n-th. The order is of no other account.
Pairing pairAttributes(Attributes const& first, Attributes const& second);
Pairing pairFields(Containers const& first, Containers const& second);
/// Children belong together by a UUID that is not nil; those that this leaves over, whatever their UUIDs, by
/// their names.
Pairing pairChildren(Containers const& first, Containers const& second);

} // namespace kxmodel
