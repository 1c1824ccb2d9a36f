// SPDX-License-Identifier: MIT
#include "observation/ObserverRep.h"

#include <AttributeContainer/Observable.h>

#include <unordered_set>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

// In a destructor the observable is known by its weak reference still, though that cannot be locked any more.
bool isSameOwner(std::weak_ptr<Observable> const& entry, Observable const& observable) {
    std::weak_ptr<ObservingObject const> const self = observable.weak_from_this();
    return !entry.owner_before(self) && !self.owner_before(entry);
}

} // namespace

void Observer::Params::Rep::add(std::weak_ptr<Observable> observable, Observable const& address) {
    auto const position = static_cast<std::uint32_t>(entries.size());
    entries.push_back({std::move(observable), &address, NONE});
    if (last == nullptr) {
        if (entries.size() > LINEAR_LIMIT)
            makeIndex();
        return;
    }
    try {
        auto const [it, isNew] = last->try_emplace(&address, position);
        if (!isNew)
            entries.back().previous = std::exchange(it->second, position);
    } catch (...) {
        entries.pop_back();
        throw;
    }
}

// Without memory for an index the entries are searched linearly, which is slower but as right.
void Observer::Params::Rep::makeIndex() noexcept {
    try {
        auto made = std::make_unique<std::unordered_map<Observable const*, std::uint32_t>>();
        for (std::uint32_t i = 0; i < entries.size(); ++i) {
            auto const [it, isNew] = made->try_emplace(entries[i].address, i);
            entries[i].previous = isNew ? NONE : std::exchange(it->second, i);
        }
        last = std::move(made);
    } catch (...) {
    }
}

std::uint32_t Observer::Params::Rep::find(Observable const& observable) const {
    if (last == nullptr) {
        for (auto i = static_cast<std::uint32_t>(entries.size()); i > 0; --i)
            if (entries[i - 1].address == &observable && isSameOwner(entries[i - 1].observable, observable))
                return i - 1;
        return NONE;
    }
    auto const found = last->find(&observable);
    for (std::uint32_t i = found == last->end() ? NONE : found->second; i != NONE; i = entries[i].previous)
        if (isSameOwner(entries[i].observable, observable))
            return i;
    return NONE;
}

void Observer::Params::Rep::remove(std::uint32_t position) noexcept {
    if (last == nullptr) {
        entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(position));
        return;
    }
    auto const found = last->find(entries[position].address);
    if (found->second != position) {
        std::uint32_t later = found->second;
        while (entries[later].previous != position)
            later = entries[later].previous;
        entries[later].previous = entries[position].previous;
    } else if (entries[position].previous != NONE) {
        found->second = entries[position].previous;
    } else {
        last->erase(found);
    }
    entries[position] = {{}, nullptr, NONE};
    ++numGaps;
    while (!entries.empty() && entries.back().address == nullptr) {
        entries.pop_back();
        --numGaps;
    }
    if (numGaps > LINEAR_LIMIT && numGaps * 2 > entries.size())
        closeGaps();
}

void Observer::Params::Rep::closeGaps() noexcept {
    if (numGaps == 0)
        return;
    std::erase_if(entries, [](Entry const& entry) { return entry.address == nullptr; });
    numGaps = 0;
    last.reset();
    if (entries.size() > LINEAR_LIMIT)
        makeIndex();
}

std::vector<std::shared_ptr<Observable>> Observer::Params::Rep::distinctObservables(bool fromLast) const {
    std::vector<std::shared_ptr<Observable>> observables;
    std::unordered_set<Observable const*> seen;
    observables.reserve(numEntries());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        auto observable = entries[fromLast ? entries.size() - 1 - i : i].observable.lock();
        if (observable != nullptr && seen.insert(observable.get()).second)
            observables.push_back(std::move(observable));
    }
    return observables;
}

} // namespace Zorvan::AttributeContainer
