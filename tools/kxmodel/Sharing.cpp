// SPDX-License-Identifier: MIT
#include "Sharing.h"

#include <AttributeContainer/Object.h>

#include <algorithm>
#include <cstdint>
#include <unordered_map>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

/// Counts containers once for every way that leads to them.
class UnsharedCount {
public:
    std::uint64_t of(AttrContainer& container) {
        // While it is on the path it counts nothing: nobody enters it again there.
        auto const [known, isNew] = counts_.try_emplace(&container, 0);
        if (!isNew)
            return known->second;
        std::uint64_t count = 1;
        for (std::uint64_t token = 0; token < container.getNumFields(); ++token)
            if (auto const field = container.getField(token).lock())
                count = std::min(count + of(*field), limit);
        auto* const object = dynamic_cast<Object*>(&container);
        for (std::uint64_t i = 0; object && i < object->children().getNumChildren(); ++i)
            count = std::min(count + of(*object->children().getChild(i)), limit);
        return counts_[&container] = count;
    }
    std::uint64_t numContainers() const { return counts_.size(); }

private:
    static constexpr std::uint64_t limit = std::uint64_t{1} << 62;
    std::unordered_map<AttrContainer const*, std::uint64_t> counts_;
};

} // namespace

bool canBeUnshared(AttrContainer& root) {
    constexpr std::uint64_t always = 1000000, factor = 10;
    UnsharedCount counter;
    std::uint64_t const count = counter.of(root);
    return count <= std::max(always, factor * counter.numContainers());
}

} // namespace kxmodel
