// SPDX-License-Identifier: MIT
#pragma once

#include "observation/LinkText.h"

#include <AttributeContainer/Observable.h>

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

namespace Zorvan::AttributeContainer {

/// What few observables need.
struct Observable::ParamsEx::Extras {
    /// A link that was read with an action that this program does not know, or without an action or a path.
    /// It is never told, and written back in its place, so that a document does not lose the links of other
    /// applications.
    struct UnknownLink {
        bool isPre;
        LinkText text;
        std::uint64_t addition; ///< counts with the additions to the list
    };

    std::vector<UnknownLink> unknownLinks;
    std::unordered_set<std::string> known; ///< list, path and action of each, so that none comes twice
};

} // namespace Zorvan::AttributeContainer
