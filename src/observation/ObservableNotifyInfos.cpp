// SPDX-License-Identifier: MIT
#include <AttributeContainer/Observable.h>

#include "foundation/PerThread.h"
#include "observation/ObservationAccess.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace Zorvan::AttributeContainer {

/// The notes of all observables on one thread. Few observables have notes at a time, and few notes each. What
/// is taken out of it is released when nothing of it is in use: what goes with notes may be foreign code that
/// works on the table.
class NotifyInfoTable {
public:
    using Infos = ObservationAccess::Infos;
    using Deferred = ObservationAccess::DeferredInfo;
    struct Entry {
        std::weak_ptr<ObservingObject const>
            owner;           ///< empty when the observable had no owner yet, or never has one
        bool isHeld = false; ///< a scope that is open keeps the observable alive; `owner` is not set yet
        Infos infos;
        std::uint32_t numScopes = 0; ///< that put notes back: the entry stays as long as there are some
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
                                               std::shared_ptr<ObserverInfo> info, NotifyingThread& thread);
    /// Takes out a note of an observable that has an entry here.
    static std::shared_ptr<ObserverInfo> take(Observable const& observable, Entry& entry, Infos::Link& link,
                                              bool dropEmpty) noexcept;
    /// Drops the entry of an observable in the table of a thread, the calling one, if it has no notes any
    /// more.
    static void dropIfEmpty(Observable const& observable, Entry const& entry,
                            NotifyingThread& thread) noexcept;
    /// Keeps a node whose note was released.
    void keepNode(Infos::Link node) noexcept;

    /// Attaches a note that is made when somebody asks for it. There are no others.
    Deferred& defer(Observable const& observable, std::type_info const& type,
                    ObservationAccess::MakeInfo makeInfo, NotifyingThread& thread) noexcept;
    /// Whether a note that was not made yet is the only one.
    bool hasOnlyDeferred() const noexcept {
        return deferred_.observable != nullptr && first_ == nullptr && entries_.empty();
    }
    /// The note of an observable that was not made yet; null when there is none.
    static Deferred* findDeferred(Observable const& observable, NotifyingThread const& thread) noexcept {
        bool const isThere = thread.notes != nullptr && thread.notes->deferred_.observable == &observable;
        return isThere ? &thread.notes->deferred_ : nullptr;
    }
    static void makeDeferred(Observable const& observable, NotifyingThread& thread) {
        if (Deferred* const deferred = findDeferred(observable, thread))
            make(*deferred, thread);
    }
    /// False: there was none.
    static bool dropDeferred(Observable const& observable, NotifyingThread& thread) noexcept;

private:
    using Entries = std::unordered_map<Observable const*, Entry>;

    static constexpr std::size_t MAX_SPARE = 4;

    bool isEmpty() const noexcept {
        return first_ == nullptr && entries_.empty() && deferred_.observable == nullptr;
    }
    static void make(Deferred& deferred, NotifyingThread& thread);
    Entry* findEntry(Observable const& observable) noexcept;
    Entry& obtain(Observable const& observable, NotifyingThread& thread);

    Deferred deferred_;
    // As a rule one observable at a time has notes: its entry stands here, the others in the table.
    Observable const* first_ = nullptr; ///< null when the first entry is free
    Entry firstEntry_;
    Entries entries_;
    Entries::value_type* lastFound_ = nullptr; ///< the one of them that was asked for last, if it is there
    // What went last is used again, so that changes of which observers are asked need no memory.
    Entries::node_type spareEntry_;
    Infos spareInfos_; ///< without notes
    std::size_t numSpareInfos_ = 0;
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
    if (first_ == &observable)
        return isOf(firstEntry_, observable) ? &firstEntry_ : nullptr;
    if (entries_.empty())
        return nullptr;
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
    if (first_ == nullptr && (entries_.empty() || !entries_.contains(&observable)))
        first_ = &observable;
    if (first_ == &observable) {
        thread.notes = this;
        return firstEntry_;
    }
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

void NotifyInfoTable::keepNode(Infos::Link node) noexcept {
    if (numSpareInfos_ == MAX_SPARE)
        return;
    spareInfos_.prepend(std::move(node));
    ++numSpareInfos_;
}

void NotifyInfoTable::dropIfEmpty(Observable const& observable, Entry const& entry,
                                  NotifyingThread& thread) noexcept {
    if (!entry.infos.empty() || entry.numScopes != 0)
        return;
    NotifyInfoTable& table = *thread.notes;
    if (&entry == &table.firstEntry_) {
        table.first_ = nullptr;
        if (table.isEmpty())
            thread.notes = nullptr;
        table.firstEntry_.owner.reset();
        table.firstEntry_.isHeld = false;
        return;
    }
    table.lastFound_ = nullptr;
    auto node = table.entries_.extract(&observable);
    if (table.isEmpty())
        thread.notes = nullptr;
    if (!table.spareEntry_.empty())
        return;
    node.mapped().owner.reset();
    node.mapped().isHeld = false;
    table.spareEntry_ = std::move(node);
}

std::shared_ptr<ObserverInfo> NotifyInfoTable::take(Observable const& observable, Entry& entry,
                                                    Infos::Link& link, bool dropEmpty) noexcept {
    NotifyingThread& thread = notifyingThread;
    Infos::Link node = Infos::take(link);
    std::shared_ptr<ObserverInfo> taken = std::move(node->info);
    thread.notes->keepNode(std::move(node));
    if (dropEmpty)
        dropIfEmpty(observable, entry, thread);
    return taken;
}

std::shared_ptr<ObserverInfo> NotifyInfoTable::store(Observable const& observable,
                                                     std::shared_ptr<ObserverInfo> info,
                                                     NotifyingThread& thread) {
    ObserverInfo const& content = *info;
    std::type_index const type(typeid(content));
    makeDeferred(observable, thread);
    Entry* entry = find(observable, thread);
    if (entry != nullptr)
        if (Infos::Link const& found = entry->infos.find(type))
            return std::exchange(found->info, std::move(info));
    NotifyInfoTable& table = thread.notes != nullptr ? *thread.notes : PerThread<NotifyInfoTable>::get();
    Infos stale;
    Infos::Link added;
    if (table.spareInfos_.empty()) {
        added = std::make_unique<Infos::Node>(type);
    } else {
        added = Infos::take(table.spareInfos_.first());
        --table.numSpareInfos_;
        added->type = type;
    }
    added->info = std::move(info);
    if (entry == nullptr) {
        entry = &table.obtain(observable, thread);
        stale.append(entry->infos);
        entry->isHeld = thread.held == &observable;
        if (entry->isHeld)
            entry->owner.reset();
        else
            entry->owner = observable.weak_from_this();
    }
    entry->infos.append(std::move(added));
    return nullptr;
}

NotifyInfoTable::Deferred& NotifyInfoTable::defer(Observable const& observable, std::type_info const& type,
                                                  ObservationAccess::MakeInfo makeInfo,
                                                  NotifyingThread& thread) noexcept {
    thread.notes = this;
    deferred_.observable = &observable;
    deferred_.type = &type;
    deferred_.make = makeInfo;
    return deferred_;
}

/// Should memory run short, the note can be made later.
void NotifyInfoTable::make(Deferred& deferred, NotifyingThread& thread) {
    std::shared_ptr<ObserverInfo> info = deferred.make(deferred.value.data());
    Observable const* const observable = std::exchange(deferred.observable, nullptr);
    try {
        store(*observable, std::move(info), thread);
    } catch (...) {
        deferred.observable = observable;
        throw;
    }
}

bool NotifyInfoTable::dropDeferred(Observable const& observable, NotifyingThread& thread) noexcept {
    Deferred* const deferred = findDeferred(observable, thread);
    if (deferred == nullptr)
        return false;
    deferred->observable = nullptr;
    if (thread.notes->isEmpty())
        thread.notes = nullptr;
    return true;
}

bool ObservationAccess::hasOnlyDeferredInfo(NotifyingThread const& thread) noexcept {
    return thread.notes != nullptr && thread.notes->hasOnlyDeferred();
}

ObservationAccess::DeferredInfo& ObservationAccess::defer(Observable& observable, std::type_info const& type,
                                                          MakeInfo makeInfo, NotifyingThread& thread) {
    observable.setCleanUp(false);
    return PerThread<NotifyInfoTable>::get().defer(observable, type, makeInfo, thread);
}

void ObservationAccess::addInfo(Observable& observable, std::shared_ptr<ObserverInfo> info,
                                NotifyingThread& thread) {
    observable.setCleanUp(false);
    std::shared_ptr<ObserverInfo> const replaced =
        NotifyInfoTable::store(observable, std::move(info), thread);
}

std::shared_ptr<ObserverInfo> ObservationAccess::findInfo(Observable const& observable,
                                                          std::type_index const& type,
                                                          NotifyingThread& thread) {
    NotifyInfoTable::makeDeferred(observable, thread);
    NotifyInfoTable::Entry* const entry = NotifyInfoTable::find(observable, thread);
    if (entry == nullptr)
        return nullptr;
    Infos::Link const& found = entry->infos.find(type);
    return found == nullptr ? nullptr : found->info;
}

bool Observable::addNotifyInfo(std::shared_ptr<ObserverInfo> info) {
    if (info == nullptr)
        return false;
    ObservationAccess::addInfo(*this, std::move(info), notifyingThread);
    return true;
}

std::shared_ptr<ObserverInfo> Observable::lookupNotifyInfo(std::type_index const& type) {
    return ObservationAccess::findInfo(*this, type, notifyingThread);
}

std::shared_ptr<ObserverInfo const> Observable::lookupNotifyInfo(std::type_index const& type) const {
    return const_cast<Observable*>(this)->lookupNotifyInfo(type);
}

std::shared_ptr<ObserverInfo> Observable::removeNotifyInfo(std::type_index const& type, bool dropEmpty) {
    NotifyInfoTable::makeDeferred(*this, notifyingThread);
    NotifyInfoTable::Entry* const entry = NotifyInfoTable::find(*this);
    if (entry == nullptr)
        return nullptr;
    NoteList::Link& found = entry->infos.find(type);
    return found == nullptr ? nullptr : NotifyInfoTable::take(*this, *entry, found, dropEmpty);
}

bool Observable::removeNotifyInfo(std::shared_ptr<ObserverInfo const> const& info, bool dropEmpty) {
    NotifyInfoTable::Entry* const entry = info == nullptr ? nullptr : NotifyInfoTable::find(*this);
    if (entry == nullptr)
        return false;
    NoteList::Link& found =
        entry->infos.findIf([&](NoteList::Node const& node) { return node.info.get() == info.get(); });
    if (found == nullptr)
        return false;
    std::shared_ptr<ObserverInfo> const released = NotifyInfoTable::take(*this, *entry, found, dropEmpty);
    return true;
}

int Observable::removeNotifyInfos(bool all) {
    int count = NotifyInfoTable::dropDeferred(*this, notifyingThread) ? 1 : 0;
    auto taken = ObservationAccess::takeInfos(*this, all);
    for (auto const* node = taken.first().get(); node != nullptr; node = node->next.get())
        ++count;
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
    NotifyInfoTable::makeDeferred(*this, notifyingThread);
    NotifyInfoTable::Entry const* const entry = NotifyInfoTable::find(*this);
    if (entry == nullptr)
        return nullptr;
    auto copy = std::make_shared<NotifyInfoMap>();
    for (auto const* node = entry->infos.first().get(); node != nullptr; node = node->next.get())
        copy->emplace(node->type, node->info);
    return copy;
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

ObservationAccess::Infos ObservationAccess::takeInfos(Observable const& observable, bool all,
                                                      NotifyingThread& thread) noexcept {
    Infos taken;
    if (NotifyInfoTable::dropDeferred(observable, thread) && thread.notes == nullptr) // Such a note expires.
        return taken;
    NotifyInfoTable::Entry* const entry = NotifyInfoTable::find(observable, thread);
    if (entry == nullptr)
        return taken;
    for (Infos::Link* link = &entry->infos.first(); *link != nullptr;) {
        if (all || (*link)->info->willExpire())
            taken.append(Infos::take(*link));
        else
            link = &(*link)->next;
    }
    NotifyInfoTable::dropIfEmpty(observable, *entry, thread);
    return taken;
}

void ObservationAccess::release(Infos& infos) noexcept {
    if (infos.empty())
        return;
    for (auto* node = infos.first().get(); node != nullptr; node = node->next.get())
        node->info.reset();
    if (NotifyInfoTable* const table = PerThread<NotifyInfoTable>::peek())
        while (!infos.empty())
            table->keepNode(Infos::take(infos.first()));
}

void ObservationAccess::dropInfos(Observable const& observable) noexcept {
    if (!hasNotifyInfosOnThread())
        return;
    auto taken = takeInfos(observable, true);
    release(taken);
}

void HeldObservable::dropExpired() const noexcept {
    NotifyInfoTable::dropDeferred(observable_, thread_);
    NotifyInfoTable::Entry* const entry = NotifyInfoTable::find(observable_, thread_);
    if (entry == nullptr)
        return;
    if (entry->isHeld) {
        entry->isHeld = false;
        entry->owner = observable_.weak_from_this();
    }
    auto expired = ObservationAccess::takeInfos(observable_, false, thread_);
    ObservationAccess::release(expired);
}

NotifyInfoScope::NotifyInfoScope(Observable& observable, std::initializer_list<std::type_index> types)
    : observable_(observable), types_(types) {
    NotifyInfoTable::makeDeferred(observable, notifyingThread);
    NotifyInfoTable::Entry* const entry = NotifyInfoTable::find(observable);
    if (entry == nullptr)
        return;
    for (std::type_index const& type : types_)
        if (NoteList::Link& found = entry->infos.find(type))
            infos_.append(NoteList::take(found));
    if (!infos_.empty())
        ++entry->numScopes;
}

NotifyInfoScope::~NotifyInfoScope() {
    ObservationAccess::Infos dropped;
    NotifyingThread& thread = notifyingThread;
    if (auto const* const deferred = NotifyInfoTable::findDeferred(observable_, thread))
        if (std::ranges::find(types_, std::type_index(*deferred->type)) != types_.end())
            NotifyInfoTable::dropDeferred(observable_, thread);
    NotifyInfoTable::Entry* const entry = NotifyInfoTable::find(observable_, thread);
    if (entry == nullptr)
        return;
    for (std::type_index const& type : types_)
        if (NoteList::Link& found = entry->infos.find(type))
            dropped.append(NoteList::take(found));
    if (!infos_.empty())
        --entry->numScopes;
    entry->infos.append(infos_);
    NotifyInfoTable::dropIfEmpty(observable_, *entry, thread);
}

} // namespace Zorvan::AttributeContainer
