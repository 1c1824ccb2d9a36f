// SPDX-License-Identifier: MIT
#pragma once

#include "observation/LinkText.h"

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

namespace Zorvan::AttributeContainer {

/// A link that was read with an action that this program does not know, or without an action or a path. It is
/// never told, and written back in its place, so that a document does not lose the links of other
/// applications.
struct UnknownLink {
    LinkText text;
    std::uint64_t addition = 0; ///< counts with the additions to the list
};

/// Those of one list.
struct UnknownLinks {
    std::vector<UnknownLink> links;
    std::unordered_set<std::string> known; ///< path and action of each, so that none comes twice
};

} // namespace Zorvan::AttributeContainer
