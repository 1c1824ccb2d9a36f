// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/WtAttrContainer.h>

#include <string>
#include <unordered_map>

namespace Zorvan::AttributeContainer {

/// What only few containers need.
struct AttrContainer::Extras {
    /// How far unique names have been counted from a start name. Every name up to there is taken, until one
    /// goes.
    std::unordered_map<std::string, std::string> uniqueNames;
};

} // namespace Zorvan::AttributeContainer
