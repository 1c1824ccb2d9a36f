// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/WtAttrContainer.h>

#include <memory>
#include <string>
#include <unordered_map>

namespace Zorvan::AttributeContainer {

/// What only few containers need.
struct AttrContainer::Extras {
    std::shared_ptr<Observable> observable; ///< Made on first use.
    /// From names that are taken to later ones that counting up reaches: every name in between is taken,
    /// until one goes. There is one for each start name, and one in ten of those that were passed.
    std::unordered_map<std::string, std::string> uniqueNames;
};

} // namespace Zorvan::AttributeContainer
