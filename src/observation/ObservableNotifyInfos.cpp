// SPDX-License-Identifier: MIT
#include <AttributeContainer/Observable.h>

#include "foundation/PerThread.h"
#include "observation/ObservationAccess.h"

#include <algorithm>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

/// The notes of all observables on one thread. Few observables have notes at a time, and few notes each.
struct InfoTable {
    using Infos = ObservationAccess::Infos;
    struct Entry {
        std::weak_ptr<ObservingObject const>
            owner; ///< empty when the observable had no owner yet, or never has one
        Infos infos;
        std::uint32_t numScopes = 0; ///< that put notes back: the entry stays as long as there are some
    };
    std::unordered_map<Observable const*, Entry> entries;
};

bool isKnown(std::weak_ptr<ObservingObject const> const& owner) {
    std::weak_ptr<ObservingObject const> const nobody;
    return owner.owner_before(nobody) || nobody.owner_before(owner);
}

// An observable that ended on another thread leaves its entry here, and the next one may have its address.
// One that is in its destructor is still known by its weak reference.
bool isOf(InfoTable::Entry const& entry, Observable const& observable) {
    if (!isKnown(entry.owner))
        return true;
    std::weak_ptr<ObservingObject const> const self = observable.weak_from_this();
    return !entry.owner.owner_before(self) && !self.owner_before(entry.owner);
}

// The entry of an observable on the calling thread, null when there is none. Does not allocate.
InfoTable::Entry* findEntry(Observable const& observable) {
    InfoTable* const table = PerThread<InfoTable>::peek();
    if (table == nullptr || table->entries.empty())
        return nullptr;
    auto const found = table->entries.find(&observable);
    return found == table->entries.end() || !isOf(found->second, observable) ? nullptr : &found->second;
}

// Drops the entry of an observable that has no notes any more.
void dropEmptyEntry(Observable const& observable, InfoTable::Entry const& entry) noexcept {
    if (entry.infos.empty() && entry.numScopes == 0)
        PerThread<InfoTable>::peek()->entries.erase(&observable);
}

InfoTable::Infos::iterator findInfo(InfoTable::Entry& entry, std::type_index const& type) {
    return std::ranges::find(entry.infos, type, [](auto const& info) { return info.first; });
}

// What is taken out is released by the caller, when nothing of the table is in use: what goes with notes may
// be foreign code that works on the table.
std::shared_ptr<ObserverInfo> takeInfo(Observable const& observable, InfoTable::Entry& entry,
                                       InfoTable::Infos::iterator info, bool dropEmpty) noexcept {
    std::shared_ptr<ObserverInfo> taken = std::move(info->second);
    entry.infos.erase(info);
    if (dropEmpty)
        dropEmptyEntry(observable, entry);
    return taken;
}

// Stores a note in place of one of the same type, which is returned.
std::shared_ptr<ObserverInfo> storeInfo(Observable const& observable, std::shared_ptr<ObserverInfo> info) {
    ObserverInfo const& content = *info;
    std::type_index const type(typeid(content));
    InfoTable::Entry* entry = findEntry(observable);
    if (entry != nullptr)
        if (auto const found = findInfo(*entry, type); found != entry->infos.end())
            return std::exchange(found->second, std::move(info));
    InfoTable::Infos added, stale;
    added.emplace_back(type, std::move(info));
    if (entry == nullptr) {
        entry = &PerThread<InfoTable>::get().entries[&observable];
        entry->infos.swap(stale);
        entry->owner = observable.weak_from_this();
    }
    entry->infos.splice(entry->infos.end(), added);
    return nullptr;
}

} // namespace

bool Observable::addNotifyInfo(std::shared_ptr<ObserverInfo> info) {
    if (info == nullptr)
        return false;
    setCleanUp(false);
    std::shared_ptr<ObserverInfo> const replaced = storeInfo(*this, std::move(info));
    return true;
}

std::shared_ptr<ObserverInfo> Observable::lookupNotifyInfo(std::type_index const& type) {
    InfoTable::Entry* const entry = findEntry(*this);
    if (entry == nullptr)
        return nullptr;
    auto const found = findInfo(*entry, type);
    return found == entry->infos.end() ? nullptr : found->second;
}

std::shared_ptr<ObserverInfo const> Observable::lookupNotifyInfo(std::type_index const& type) const {
    return const_cast<Observable*>(this)->lookupNotifyInfo(type);
}

std::shared_ptr<ObserverInfo> Observable::removeNotifyInfo(std::type_index const& type, bool dropEmpty) {
    InfoTable::Entry* const entry = findEntry(*this);
    if (entry == nullptr)
        return nullptr;
    auto const found = findInfo(*entry, type);
    return found == entry->infos.end() ? nullptr : takeInfo(*this, *entry, found, dropEmpty);
}

bool Observable::removeNotifyInfo(std::shared_ptr<ObserverInfo const> const& info, bool dropEmpty) {
    InfoTable::Entry* const entry = info == nullptr ? nullptr : findEntry(*this);
    if (entry == nullptr)
        return false;
    auto const found =
        std::ranges::find(entry->infos, info.get(), [](auto const& stored) { return stored.second.get(); });
    if (found == entry->infos.end())
        return false;
    std::shared_ptr<ObserverInfo> const released = takeInfo(*this, *entry, found, dropEmpty);
    return true;
}

int Observable::removeNotifyInfos(bool all) {
    return static_cast<int>(ObservationAccess::takeInfos(*this, all).size());
}

int Observable::removeNotifyInfos(std::shared_ptr<NotifyInfoMap const> const& infos) {
    int removed = 0;
    if (infos != nullptr)
        for (auto const& [type, info] : *infos)
            removed += removeNotifyInfo(std::shared_ptr<ObserverInfo const>(info), true) ? 1 : 0;
    return removed;
}

std::shared_ptr<Observable::NotifyInfoMap> Observable::copyNotifyInfos() const {
    InfoTable::Entry const* const entry = findEntry(*this);
    return entry == nullptr ? nullptr
                            : std::make_shared<NotifyInfoMap>(entry->infos.begin(), entry->infos.end());
}

void Observable::setNotifyInfos(std::shared_ptr<NotifyInfoMap> const& infos) {
    if (infos == nullptr)
        return;
    // What goes with a replaced note may be foreign, and change the caller's map or end this observable.
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock();
    NotifyInfoMap const copy = *infos;
    for (auto const& [type, info] : copy)
        addNotifyInfo(info);
}

bool ObservationAccess::hasNotifyInfosOnThread() {
    InfoTable const* const table = PerThread<InfoTable>::peek();
    return table != nullptr && !table->entries.empty();
}

ObservationAccess::Infos ObservationAccess::takeInfos(Observable const& observable, bool all) noexcept {
    Infos taken;
    InfoTable::Entry* const entry = findEntry(observable);
    if (entry == nullptr)
        return taken;
    for (auto info = entry->infos.begin(); info != entry->infos.end();) {
        auto const here = info++;
        if (all || here->second->willExpire())
            taken.splice(taken.end(), entry->infos, here);
    }
    dropEmptyEntry(observable, *entry);
    return taken;
}

void ObservationAccess::dropInfos(Observable const& observable) noexcept { takeInfos(observable, true); }

NotifyInfoScope::NotifyInfoScope(Observable& observable, std::initializer_list<std::type_index> types)
    : observable_(observable), types_(types) {
    InfoTable::Entry* const entry = findEntry(observable);
    if (entry == nullptr)
        return;
    for (std::type_index const& type : types_)
        if (auto const found = findInfo(*entry, type); found != entry->infos.end())
            infos_.splice(infos_.end(), entry->infos, found);
    if (!infos_.empty())
        ++entry->numScopes;
}

NotifyInfoScope::~NotifyInfoScope() {
    ObservationAccess::Infos dropped;
    InfoTable::Entry* const entry = findEntry(observable_);
    if (entry == nullptr)
        return;
    for (std::type_index const& type : types_)
        if (auto const found = findInfo(*entry, type); found != entry->infos.end())
            dropped.splice(dropped.end(), entry->infos, found);
    if (!infos_.empty())
        --entry->numScopes;
    entry->infos.splice(entry->infos.end(), infos_);
    dropEmptyEntry(observable_, *entry);
}

} // namespace Zorvan::AttributeContainer
