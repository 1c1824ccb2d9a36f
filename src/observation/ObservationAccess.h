// SPDX-License-Identifier: MIT
#pragma once

#include "foundation/RecyclingAllocator.h"
#include "observation/NoteList.h"
#include "observation/NotifyingThread.h"

#include <AttributeContainer/Observable.h>
#include <AttributeContainer/Observer.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <type_traits>
#include <typeindex>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

class ObserverRelationTableObserver;
struct RegisteredAction;

/// What the library's own code needs of observables and observers beyond their public interface.
class ObservationAccess {
public:
    class Notification;

    /// The observable kept alive; empty when no shared pointer owns it (any more).
    static std::shared_ptr<ObservingObject> hold(Observable& observable) noexcept {
        return (observable.flags_ & Observable::OWNED) != 0 ? hold(static_cast<ObservingObject&>(observable))
                                                            : holdFirst(observable);
    }
    /// The same for an object of which hardly any is not owned: it takes an exception to find that out.
    static std::shared_ptr<ObservingObject> hold(ObservingObject& object) noexcept;
    static std::shared_ptr<ObservingObject const> hold(ObservingObject const& object) noexcept {
        return hold(const_cast<ObservingObject&>(object));
    }

    /// What Observable::notifySequence, notifyPreObservers and notifyPostObservers do, for callers that know
    /// their thread.
    static void notify(Observable& observable, ObserverList* list,
                       std::shared_ptr<ObservingObject> const& cause,
                       std::vector<Observable::NotificationResult>* results, NotifyingThread& thread);
    static void notifyPre(Observable& observable, std::shared_ptr<ObservingObject> const& cause,
                          std::vector<Observable::NotificationResult>* results, NotifyingThread& thread) {
        notify(observable, findList(observable, true), cause, results, thread);
    }
    static void notifyPost(Observable& observable, std::shared_ptr<ObservingObject> const& cause,
                           std::vector<Observable::NotificationResult>* results, NotifyingThread& thread);

    /// Whether a notification runs on the observable.
    static bool isWalking(Observable const& observable) {
        return observable.depth_.load(std::memory_order_relaxed) > 0;
    }
    /// How many do.
    static std::uint64_t walkDepth(Observable const& observable) {
        return observable.depth_.load(std::memory_order_relaxed);
    }
    /// Whether one of them asks its pre-observers.
    static bool isPreWalking(Observable const& observable);
    [[gnu::always_inline]] static bool hasPreObservers(Observable const& observable) {
        return observable.params_ != nullptr && !observable.params_->preList_.empty();
    }
    [[gnu::always_inline]] static bool hasPostObservers(Observable const& observable) {
        return observable.params_ != nullptr && !observable.params_->postList_.empty();
    }

    using Infos = NoteList;

    /// Whether any observable has notes on the calling thread.
    static bool hasNotifyInfosOnThread() noexcept { return notifyingThread.notes != nullptr; }
    /// What Observable::addNotifyInfo and lookupNotifyInfo do, for callers that know their thread, with a
    /// note that is not null.
    static void addInfo(Observable& observable, std::shared_ptr<ObserverInfo> info, NotifyingThread& thread);
    static std::shared_ptr<ObserverInfo> findInfo(Observable const& observable, std::type_index const& type,
                                                  NotifyingThread& thread);
    /// Attaches a note of a small value, which is not made before somebody asks for notes of the observable:
    /// most who are asked about a change look at the attribute alone, or not at all.
    template <class Info, class Value>
    static void addInfoOf(Observable& observable, Value const& value, NotifyingThread& thread) {
        static_assert(std::is_trivially_copyable_v<Value> && sizeof(Value) <= DeferredInfo::MAX_SIZE &&
                      alignof(Value) <= alignof(std::max_align_t));
        if (thread.notes != nullptr) {
            addInfo(observable, makeInfo<Info, Value>(&value), thread);
            return;
        }
        DeferredInfo& deferred = defer(observable, typeid(Info), &makeInfo<Info, Value>, thread);
        std::memcpy(deferred.value.data(), &value, sizeof(Value));
    }
    /// Whether a note that was not made yet is the only one on a thread, which is the calling one.
    static bool hasOnlyDeferredInfo(NotifyingThread const& thread) noexcept;
    /// Whether there is anything that a document or a copy could take over: links that are not temporary, or
    /// ones with unknown actions.
    static bool hasLinks(Observable const& observable) {
        return observable.params_ != nullptr && hasLastingLinks(observable);
    }
    /// The same of an observable of which others know, or knew.
    static bool hasLastingLinks(Observable const& observable);

    /// The calling thread's relation table, null when no scope is open.
    static ObserverRelationTableObserver* relationTable() noexcept;
    /// Forgets the links with unknown actions.
    static void dropUnknownLinks(Observable& observable);

    /// Redirects the inactive links of an observable from copied observers to their copies; returns how many.
    static std::uint64_t exchangePtr(Observable& observable, ObserverRelationTableObserver& table) {
        return observable.exchangePtr(table);
    }

    /// The record of a registered action, null for an unknown token.
    static std::shared_ptr<RegisteredAction> action(std::uint64_t token);
    /// The thread's path root as set by applications, null when there is none.
    static std::shared_ptr<Observer> currentPathRoot();

    /// Goes from an object along a path of several components; a single one leads nowhere. Empty components
    /// are passed over.
    static std::weak_ptr<ObservingObject const> walkPath(ObservingObject const& start, std::string_view path);

    /// A list of an observable; the observable gets its lists when it has none.
    static ObserverList& listOf(Observable& observable, bool isPre) {
        return isPre ? observable.parEx().preList_ : observable.parEx().postList_;
    }
    /// Its list when it has lists, else null.
    static ObserverList* findList(Observable const& observable, bool isPre) {
        if (observable.params_ == nullptr)
            return nullptr;
        return isPre ? &observable.params_->preList_ : &observable.params_->postList_;
    }
    /// The pre-observers' list and the other one; both are null when the observable has none.
    static std::array<ObserverList*, 2> listsOf(Observable const& observable) {
        return {findList(observable, true), findList(observable, false)};
    }
    static std::uint64_t numLinks(Observable const& observable, bool isPre);
    static std::vector<std::shared_ptr<Observable>> foreignObservables(Observer const& observer);
    static std::vector<ObserverPath*> liveLinks(ObserverList const& list, Observer const& observer);

    /// Takes out all notes of an observable on the calling thread, or the expiring ones. Release them when
    /// nothing depends on the observable any more: foreign code may go with them.
    static Infos takeInfos(Observable const& observable, bool all,
                           NotifyingThread& thread = notifyingThread) noexcept;

    /// Releases notes that were taken out; foreign code may go with them. Their nodes are used again.
    static void release(Infos& infos) noexcept;

    /// Drops all notes of an observable on the calling thread, without need of memory.
    static void dropInfos(Observable const& observable) noexcept;

    /// The observer that an observable keeps, through which it follows others; null when there is none.
    static std::shared_ptr<Observer> follower(Observable const& observable);
    static void keepFollower(Observable& observable, std::shared_ptr<Observer> follower);
    static std::shared_ptr<Observer> takeFollower(Observable& observable) noexcept;

    /// Number of active links of which the observer knows.
    static std::size_t numEntries(Observer const& observer);
    /// Removes the observer's last entry for an observable, if it has one; also while either is being
    /// destroyed.
    static void dropEntry(Observer& observer, Observable const& observable) noexcept;
    /// Removes all of them.
    static void dropEntries(Observer& observer, Observable const& observable) noexcept;

private:
    friend class NotifyInfoTable;

    using MakeInfo = std::shared_ptr<ObserverInfo> (*)(void const* value);

    /// A note that was not made yet.
    struct DeferredInfo {
        static constexpr std::size_t MAX_SIZE = 4 * sizeof(void*);

        Observable const* observable = nullptr; ///< null when there is no such note
        std::type_info const* type = nullptr;
        MakeInfo make = nullptr;
        alignas(std::max_align_t) std::array<std::byte, MAX_SIZE> value{};
    };

    template <class Info, class Value>
    static std::shared_ptr<ObserverInfo> makeInfo(void const* value) {
        return std::allocate_shared<Info>(RecyclingAllocator<Info>(), *static_cast<Value const*>(value));
    }
    /// No observable has a note on the thread, the calling one.
    static DeferredInfo& defer(Observable& observable, std::type_info const& type, MakeInfo makeInfo,
                               NotifyingThread& thread);

    static std::shared_ptr<ObservingObject> holdFirst(Observable& observable) noexcept;
};

/// Tells that the calling thread keeps an observable alive for a scope: what is noted of it meanwhile is
/// known to be its own, without asking whom an address belongs to. At the end no expiring note of it is left.
/// Scopes nest; the observable must be owned by a shared pointer.
class HeldObservable {
public:
    HeldObservable(Observable const& observable, NotifyingThread& thread) noexcept
        : observable_(observable), thread_(thread), outer_(std::exchange(thread.held, &observable)) {}
    HeldObservable(HeldObservable const&) = delete;
    HeldObservable& operator=(HeldObservable const&) = delete;
    ~HeldObservable() {
        thread_.held = outer_;
        if (thread_.notes != nullptr)
            dropExpired();
    }

private:
    void dropExpired() const noexcept;

    Observable const& observable_;
    NotifyingThread& thread_; ///< of the calling thread
    Observable const* outer_;
};

/// Takes notes of given types out of an observable for a scope, and puts them back: a change that begins
/// while the pre-observers of an outer change of the same observable are asked must not see, nor lose, what
/// belongs to that. What was attached in between under those types is dropped. The observable must outlive
/// the scope.
class NotifyInfoScope {
public:
    NotifyInfoScope(Observable& observable, std::initializer_list<std::type_index> types);
    NotifyInfoScope(NotifyInfoScope const&) = delete;
    NotifyInfoScope& operator=(NotifyInfoScope const&) = delete;
    ~NotifyInfoScope();

private:
    Observable& observable_;
    std::vector<std::type_index> types_;
    ObservationAccess::Infos infos_;
};

} // namespace Zorvan::AttributeContainer
