// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/AttrDefinition.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Zorvan::AttributeContainer {

/// What attributes ask of the container that they are bound to. The containers' layer implements it.
class ContainerLink {
public:
    static std::uint64_t declaredToken(AttrContainer const& container, Attribute const& attribute,
                                       std::uint64_t hint);
    static std::uint64_t customToken(AttrContainer const& container, Attribute const& attribute);
    static std::string attrName(AttrContainer const& container, std::uint64_t token);
    static AttrDefinition const* definition(AttrContainer const& container, std::uint64_t token);
    static Observer const& asObserver(AttrContainer const& container);
    static void nameStored(AttrContainer const& container);
};

} // namespace Zorvan::AttributeContainer
