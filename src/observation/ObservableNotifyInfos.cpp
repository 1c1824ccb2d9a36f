// SPDX-License-Identifier: MIT
#include <AttributeContainer/Observable.h>

#include "foundation/PerThread.h"
#include "observation/ObservationAccess.h"

#include <algorithm>
#include <utility>

namespace Zorvan::AttributeContainer {

/// The notes of all observables on one thread. Few observables have notes at a time, and few notes each. What
/// is taken out of it is released when nothing of it is in use: what goes with notes may be foreign code that
/// works on the table.
class NotifyInfoTable {
public:
    using Infos = ObservationAccess::Infos;
    struct Entry {
        std::weak_ptr<ObservingObject const>
            owner;           ///< empty when the observable had no owner yet, or never has one
        bool isHeld = false; ///< a scope that is open keeps the observable alive; `owner` is not set yet
        Infos infos;
        std::uint32_t numScopes = 0; ///< that put notes back: the entry stays as long as there are some

        Infos::iterator find(std::type_index const& type) {
            return std::ranges::find(infos, type, [](auto const& info) { return info.first; });
        }
    };

    /// The entry of an observable in the table of a thread, which is the calling one; null when there is
    /// none.
    static Entry* find(Observable const& observable,
                       NotifyingThread const& thread = notifyingThread) noexcept {
        return thread.notes == nullptr ? nullptr : thread.notes->findEntry(observable);
    }

    NotifyInfoTable() = default;
    NotifyInfoTable(NotifyInfoTable const&) = delete;
    NotifyInfoTable& operator=(NotifyInfoTable const&) = delete;
    // Asked for anew: the memory of plain variables of the thread may have gone already.
    ~NotifyInfoTable() { notifyingThread.notes = nullptr; }

    /// Stores a note in place of one of the same type, which is returned.
    static std::shared_ptr<ObserverInfo> store(Observable const& observable,
                                               std::shared_ptr<ObserverInfo> info);
    /// Takes out a note of an observable that has an entry here.
    static std::shared_ptr<ObserverInfo> take(Observable const& observable, Entry& entry,
                                              Infos::iterator info, bool dropEmpty) noexcept;
    /// Drops the entry of an observable in the table of a thread, the calling one, if it has no notes any
    /// more.
    static void dropIfEmpty(Observable const& observable, Entry const& entry,
                            NotifyingThread& thread) noexcept;
    /// Keeps a node whose note was taken out.
    void keepNode(Infos& infos, Infos::iterator node) noexcept;

private:
    using Entries = std::unordered_map<Observable const*, Entry>;

    static constexpr std::size_t MAX_SPARE = 4;

    Entry* findEntry(Observable const& observable) noexcept;
    Entry& obtain(Observable const& observable, NotifyingThread& thread);

    Entries entries_;
    Entries::value_type* lastFound_ = nullptr; ///< the entry that was asked for last, if it is still there
    // What went last is used again, so that changes of which observers are asked need no memory.
    Entries::node_type spareEntry_;
    Infos spareInfos_; ///< without notes
};

namespace {

bool isKnown(std::weak_ptr<ObservingObject const> const& owner) {
    std::weak_ptr<ObservingObject const> const nobody;
    return owner.owner_before(nobody) || nobody.owner_before(owner);
}

// An observable that ended on another thread leaves its entry here, and the next one may have its address.
// One that is in its destructor is still known by its weak reference.
bool isOf(NotifyInfoTable::Entry const& entry, Observable const& observable) {
    if (entry.isHeld || !isKnown(entry.owner))
        return true;
    std::weak_ptr<ObservingObject const> const self = observable.weak_from_this();
    return !entry.owner.owner_before(self) && !self.owner_before(entry.owner);
}

} // namespace

NotifyInfoTable::Entry* NotifyInfoTable::findEntry(Observable const& observable) noexcept {
    if (lastFound_ == nullptr || lastFound_->first != &observable) {
        auto const found = entries_.find(&observable);
        if (found == entries_.end())
            return nullptr;
        lastFound_ = &*found;
    }
    Entry& entry = lastFound_->second;
    return isOf(entry, observable) ? &entry : nullptr;
}

/// The entry of an observable, made when there is none.
NotifyInfoTable::Entry& NotifyInfoTable::obtain(Observable const& observable, NotifyingThread& thread) {
    if (spareEntry_.empty()) {
        lastFound_ = &*entries_.try_emplace(&observable).first;
    } else {
        spareEntry_.key() = &observable;
        auto inserted = entries_.insert(std::move(spareEntry_));
        spareEntry_ = std::move(inserted.node);
        lastFound_ = &*inserted.position;
    }
    thread.notes = this;
    return lastFound_->second;
}

void NotifyInfoTable::keepNode(Infos& infos, Infos::iterator node) noexcept {
    if (spareInfos_.size() < MAX_SPARE)
        spareInfos_.splice(spareInfos_.end(), infos, node);
    else
        infos.erase(node);
}

void NotifyInfoTable::dropIfEmpty(Observable const& observable, Entry const& entry,
                                  NotifyingThread& thread) noexcept {
    if (!entry.infos.empty() || entry.numScopes != 0)
        return;
    NotifyInfoTable& table = *thread.notes;
    table.lastFound_ = nullptr;
    auto node = table.entries_.extract(&observable);
    if (table.entries_.empty())
        thread.notes = nullptr;
    if (!table.spareEntry_.empty())
        return;
    node.mapped().owner.reset();
    node.mapped().isHeld = false;
    table.spareEntry_ = std::move(node);
}

std::shared_ptr<ObserverInfo> NotifyInfoTable::take(Observable const& observable, Entry& entry,
                                                    Infos::iterator info, bool dropEmpty) noexcept {
    NotifyingThread& thread = notifyingThread;
    std::shared_ptr<ObserverInfo> taken = std::move(info->second);
    thread.notes->keepNode(entry.infos, info);
    if (dropEmpty)
        dropIfEmpty(observable, entry, thread);
    return taken;
}

std::shared_ptr<ObserverInfo> NotifyInfoTable::store(Observable const& observable,
                                                     std::shared_ptr<ObserverInfo> info) {
    ObserverInfo const& content = *info;
    std::type_index const type(typeid(content));
    NotifyingThread& thread = notifyingThread;
    Entry* entry = find(observable, thread);
    if (entry != nullptr)
        if (auto const found = entry->find(type); found != entry->infos.end())
            return std::exchange(found->second, std::move(info));
    NotifyInfoTable& table = thread.notes != nullptr ? *thread.notes : PerThread<NotifyInfoTable>::get();
    Infos added, stale;
    if (table.spareInfos_.empty()) {
        added.emplace_back(type, std::move(info));
    } else {
        added.splice(added.end(), table.spareInfos_, table.spareInfos_.begin());
        added.front() = {type, std::move(info)};
    }
    if (entry == nullptr) {
        entry = &table.obtain(observable, thread);
        entry->infos.swap(stale);
        entry->isHeld = thread.held == &observable;
        if (entry->isHeld)
            entry->owner.reset();
        else
            entry->owner = observable.weak_from_this();
    }
    entry->infos.splice(entry->infos.end(), added);
    return nullptr;
}

bool Observable::addNotifyInfo(std::shared_ptr<ObserverInfo> info) {
    if (info == nullptr)
        return false;
    setCleanUp(false);
    std::shared_ptr<ObserverInfo> const replaced = NotifyInfoTable::store(*this, std::move(info));
    return true;
}

std::shared_ptr<ObserverInfo> Observable::lookupNotifyInfo(std::type_index const& type) {
    NotifyInfoTable::Entry* const entry = NotifyInfoTable::find(*this);
    if (entry == nullptr)
        return nullptr;
    auto const found = entry->find(type);
    return found == entry->infos.end() ? nullptr : found->second;
}

std::shared_ptr<ObserverInfo const> Observable::lookupNotifyInfo(std::type_index const& type) const {
    return const_cast<Observable*>(this)->lookupNotifyInfo(type);
}

std::shared_ptr<ObserverInfo> Observable::removeNotifyInfo(std::type_index const& type, bool dropEmpty) {
    NotifyInfoTable::Entry* const entry = NotifyInfoTable::find(*this);
    if (entry == nullptr)
        return nullptr;
    auto const found = entry->find(type);
    return found == entry->infos.end() ? nullptr : NotifyInfoTable::take(*this, *entry, found, dropEmpty);
}

bool Observable::removeNotifyInfo(std::shared_ptr<ObserverInfo const> const& info, bool dropEmpty) {
    NotifyInfoTable::Entry* const entry = info == nullptr ? nullptr : NotifyInfoTable::find(*this);
    if (entry == nullptr)
        return false;
    auto const found =
        std::ranges::find(entry->infos, info.get(), [](auto const& stored) { return stored.second.get(); });
    if (found == entry->infos.end())
        return false;
    std::shared_ptr<ObserverInfo> const released = NotifyInfoTable::take(*this, *entry, found, dropEmpty);
    return true;
}

int Observable::removeNotifyInfos(bool all) {
    auto taken = ObservationAccess::takeInfos(*this, all);
    auto const count = static_cast<int>(taken.size());
    ObservationAccess::release(taken);
    return count;
}

int Observable::removeNotifyInfos(std::shared_ptr<NotifyInfoMap const> const& infos) {
    int removed = 0;
    if (infos != nullptr)
        for (auto const& [type, info] : *infos)
            removed += removeNotifyInfo(std::shared_ptr<ObserverInfo const>(info), true) ? 1 : 0;
    return removed;
}

std::shared_ptr<Observable::NotifyInfoMap> Observable::copyNotifyInfos() const {
    NotifyInfoTable::Entry const* const entry = NotifyInfoTable::find(*this);
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

ObservationAccess::Infos ObservationAccess::takeInfos(Observable const& observable, bool all) noexcept {
    Infos taken;
    NotifyingThread& thread = notifyingThread;
    NotifyInfoTable::Entry* const entry = NotifyInfoTable::find(observable, thread);
    if (entry == nullptr)
        return taken;
    for (auto info = entry->infos.begin(); info != entry->infos.end();) {
        auto const here = info++;
        if (all || here->second->willExpire())
            taken.splice(taken.end(), entry->infos, here);
    }
    NotifyInfoTable::dropIfEmpty(observable, *entry, thread);
    return taken;
}

void ObservationAccess::release(Infos& infos) noexcept {
    if (infos.empty())
        return;
    for (auto& [type, info] : infos)
        info.reset();
    if (NotifyInfoTable* const table = PerThread<NotifyInfoTable>::peek())
        while (!infos.empty())
            table->keepNode(infos, infos.begin());
}

void ObservationAccess::dropInfos(Observable const& observable) noexcept {
    auto taken = takeInfos(observable, true);
    release(taken);
}

void HeldObservable::dropExpired() const noexcept {
    NotifyInfoTable::Entry* const entry = NotifyInfoTable::find(observable_, thread_);
    if (entry == nullptr)
        return;
    if (entry->isHeld) {
        entry->isHeld = false;
        entry->owner = observable_.weak_from_this();
    }
    auto expired = ObservationAccess::takeInfos(observable_, false);
    ObservationAccess::release(expired);
}

NotifyInfoScope::NotifyInfoScope(Observable& observable, std::initializer_list<std::type_index> types)
    : observable_(observable), types_(types) {
    NotifyInfoTable::Entry* const entry = NotifyInfoTable::find(observable);
    if (entry == nullptr)
        return;
    for (std::type_index const& type : types_)
        if (auto const found = entry->find(type); found != entry->infos.end())
            infos_.splice(infos_.end(), entry->infos, found);
    if (!infos_.empty())
        ++entry->numScopes;
}

NotifyInfoScope::~NotifyInfoScope() {
    ObservationAccess::Infos dropped;
    NotifyingThread& thread = notifyingThread;
    NotifyInfoTable::Entry* const entry = NotifyInfoTable::find(observable_, thread);
    if (entry == nullptr)
        return;
    for (std::type_index const& type : types_)
        if (auto const found = entry->find(type); found != entry->infos.end())
            dropped.splice(dropped.end(), entry->infos, found);
    if (!infos_.empty())
        --entry->numScopes;
    entry->infos.splice(entry->infos.end(), infos_);
    NotifyInfoTable::dropIfEmpty(observable_, *entry, thread);
}

} // namespace Zorvan::AttributeContainer
