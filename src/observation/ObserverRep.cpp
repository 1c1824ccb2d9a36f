// SPDX-License-Identifier: MIT
#include "observation/ObserverRep.h"

#include <AttributeContainer/Observable.h>

#include <unordered_set>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::uint64_t npos = ~std::uint64_t{0};

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

Observer::Params::Params() = default;

Observer::Params::~Params() = default;

bool Observer::Params::empty() const { return numEntries() == 0; }

std::uint64_t Observer::Params::lookupObservedByMe(Observable const& observable) const {
    auto const owner = observable.shared_from_this();
    if (rep_ != nullptr)
        rep_->closeGaps();
    return find(observable);
}

std::size_t Observer::Params::numEntries() const {
    if (rep_ != nullptr)
        return rep_->numEntries();
    return addressOfOnly_ == nullptr ? 0 : 1;
}

void Observer::Params::add(std::weak_ptr<Observable> observable, Observable const& address) {
    if (rep_ == nullptr && addressOfOnly_ == nullptr) {
        only_ = std::move(observable);
        addressOfOnly_ = &address;
        return;
    }
    if (rep_ == nullptr) {
        auto made = std::make_unique<Rep>();
        made->entries.reserve(2);
        made->add(only_, *addressOfOnly_);
        rep_ = std::move(made);
        only_.reset();
        addressOfOnly_ = nullptr;
    }
    rep_->add(std::move(observable), address);
}

std::uint64_t Observer::Params::find(Observable const& observable) const {
    if (rep_ == nullptr)
        return addressOfOnly_ == &observable && isSameOwner(only_, observable) ? 0 : npos;
    std::uint32_t const found = rep_->find(observable);
    return found == Rep::NONE ? npos : found;
}

bool Observer::Params::removeLast(Observable const& observable) noexcept {
    std::uint64_t const found = find(observable);
    if (found == npos)
        return false;
    if (rep_ != nullptr)
        rep_->remove(static_cast<std::uint32_t>(found));
    else
        clear();
    return true;
}

void Observer::Params::clear() noexcept {
    rep_.reset();
    only_.reset();
    addressOfOnly_ = nullptr;
}

std::vector<std::shared_ptr<Observable>> Observer::Params::distinctObservables(bool fromLast) const {
    std::vector<std::shared_ptr<Observable>> observables;
    if (rep_ == nullptr) {
        if (auto observable = only_.lock())
            observables.push_back(std::move(observable));
        return observables;
    }
    auto const& entries = rep_->entries;
    std::unordered_set<Observable const*> seen;
    observables.reserve(rep_->numEntries());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        auto observable = entries[fromLast ? entries.size() - 1 - i : i].observable.lock();
        if (observable != nullptr && seen.insert(observable.get()).second)
            observables.push_back(std::move(observable));
    }
    return observables;
}

} // namespace Zorvan::AttributeContainer
