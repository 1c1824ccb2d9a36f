// SPDX-License-Identifier: MIT
#include "Sharing.h"

#include <AttributeContainer/Object.h>

#include <algorithm>
#include <cstdint>
#include <unordered_set>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

/// Calls `enter` for everything directly below a container.
template <class Enter>
void forEachMember(AttrContainer& container, Enter const& enter) {
    for (std::uint64_t token = 0; token < container.getNumFields(); ++token)
        if (auto const field = container.getField(token).lock())
            enter(*field);
    auto* const object = dynamic_cast<Object*>(&container);
    for (std::uint64_t i = 0; object && i < object->children().getNumChildren(); ++i)
        enter(*object->children().getChild(i));
}

/// The containers, each once.
void collect(AttrContainer& container, std::unordered_set<AttrContainer const*>& known) {
    if (known.insert(&container).second)
        forEachMember(container, [&](AttrContainer& member) { collect(member, known); });
}

/// Takes every way that leads to a container, as copies and exports do, until it has had enough. What was
/// counted for a container on one way does not hold for another, which other references end.
class UnsharedCount {
public:
    explicit UnsharedCount(std::uint64_t limit) : numLeft_(limit) {}

    bool isWithinLimit(AttrContainer& container) {
        // While it is on the path nobody enters it again. The path may lead through many references, and be
        // longer than a document nests.
        if (path_.size() == maxDepth)
            numLeft_ = 0;
        if (numLeft_ == 0 || !path_.insert(&container).second)
            return numLeft_ != 0;
        --numLeft_;
        forEachMember(container, [this](AttrContainer& member) { isWithinLimit(member); });
        path_.erase(&container);
        return numLeft_ != 0;
    }

private:
    static constexpr std::size_t maxDepth = 500; // As the library.

    std::uint64_t numLeft_;
    std::unordered_set<AttrContainer const*> path_;
};

} // namespace

bool canBeUnshared(AttrContainer& root) {
    constexpr std::uint64_t always = 1000000, factor = 10;
    std::unordered_set<AttrContainer const*> containers;
    collect(root, containers);
    return UnsharedCount(std::max<std::uint64_t>(always, factor * containers.size())).isWithinLimit(root);
}

} // namespace kxmodel
