// SPDX-License-Identifier: MIT
#include <AttributeContainer/ReferenceDictionary.h>

#include "foundation/MakeError.h"

#include <algorithm>
#include <utility>

namespace Zorvan::AttributeContainer {

ReferenceDictionary::ReferenceDictionary() = default;
ReferenceDictionary::~ReferenceDictionary() = default;

std::string const& ReferenceDictionary::getStaticClassName() {
    static std::string const& name = *new std::string("ReferenceDictionary");
    return name;
}

std::string const& ReferenceDictionary::getClassName() const { return getStaticClassName(); }

std::shared_ptr<AttrContainer> ReferenceDictionary::resolveReference(std::uint64_t id) {
    Entry const* const entry = find(id);
    return entry ? entry->container : nullptr;
}

bool ReferenceDictionary::registerReference(std::uint64_t id, std::shared_ptr<AttrContainer> container) {
    if (!container)
        return false;
    Entry* const entry = find(id);
    if (!entry || (entry->container && entry->container != container))
        return false;
    entry->container = std::move(container);
    return true;
}

bool ReferenceDictionary::unregisterReference(std::uint64_t id) {
    Entry* const entry = find(id);
    if (!entry)
        return false;
    // The container may end here, and its destructor may come back to this dictionary.
    std::shared_ptr<AttrContainer> const released = std::exchange(entry->container, nullptr);
    return true;
}

void ReferenceDictionary::initializeFromVector(std::vector<std::uint64_t>& ids) {
    std::sort(ids.begin(), ids.end());
    std::vector<Entry> entries;
    entries.reserve(ids.size());
    for (std::uint64_t const id : ids)
        entries.push_back({id, nullptr});
    entries_.swap(entries);
}

Result ReferenceDictionary::writeTo(std::ostream&, std::shared_ptr<WriteContextBase const>) { return {}; }

Result ReferenceDictionary::readFrom(std::istream&, std::shared_ptr<ReadContextBase const>) {
    return makeError("ReferenceDictionary", 87, NotSupported);
}

/// The first entry of `id`, or null.
ReferenceDictionary::Entry* ReferenceDictionary::find(std::uint64_t id) {
    auto const found =
        std::lower_bound(entries_.begin(), entries_.end(), id,
                         [](Entry const& entry, std::uint64_t wanted) { return entry.id < wanted; });
    return found != entries_.end() && found->id == id ? &*found : nullptr;
}

} // namespace Zorvan::AttributeContainer
