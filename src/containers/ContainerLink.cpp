// SPDX-License-Identifier: MIT
#include "attributes/ContainerLink.h"

#include "containers/ContainerAccess.h"

namespace Zorvan::AttributeContainer {

std::uint64_t ContainerLink::declaredToken(AttrContainer const& container, Attribute const& attribute,
                                           std::uint64_t hint) {
    auto const& declared = ContainerAccess::declared(container);
    if (hint < declared.size() && declared[hint].get() == &attribute)
        return hint;
    return container.getAttrToken(attribute);
}

std::uint64_t ContainerLink::customToken(AttrContainer const& container, Attribute const& attribute) {
    auto const* custom = ContainerAccess::custom(container);
    return custom ? custom->getToken(attribute) : DataStructures::KeyTable::noToken;
}

std::string ContainerLink::attrName(AttrContainer const& container, std::uint64_t token) {
    return container.getAttrName(token).value_or(std::string());
}

AttrDefinition const* ContainerLink::definition(AttrContainer const& container, std::uint64_t token) {
    return container.getAttrDefinition(token);
}

Observer const& ContainerLink::asObserver(AttrContainer const& container) { return container; }

void ContainerLink::nameStored(AttrContainer const& container) {
    ContainerAccess::nameStored(const_cast<AttrContainer&>(container));
}

} // namespace Zorvan::AttributeContainer
