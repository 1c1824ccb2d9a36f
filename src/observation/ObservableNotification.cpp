// SPDX-License-Identifier: MIT
#include <AttributeContainer/Observable.h>

#include "observation/ObservationAccess.h"
#include "observation/ObserverListRep.h"
#include "observation/RegisteredAction.h"

#include <AttributeContainer/Observer.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

namespace Zorvan::AttributeContainer {

// A weak pointer would be copied and let go of, which is as much as to lock it once more: it is asked only
// until the observable is known to be owned.
std::shared_ptr<ObservingObject> ObservationAccess::holdFirst(Observable& observable) noexcept {
    auto owned = observable.weak_from_this().lock();
    if (owned != nullptr)
        observable.flags_ = static_cast<std::uint16_t>(observable.flags_ | Observable::OWNED);
    return owned;
}

std::shared_ptr<ObservingObject> ObservationAccess::hold(ObservingObject& object) noexcept {
    try {
        return object.shared_from_this();
    } catch (std::bad_weak_ptr const&) {
        return nullptr;
    }
}

bool ObservationAccess::isPreWalking(Observable const& observable) {
    return isWalking(observable) && ObserverWalk::isNotifying(observable, *findList(observable, true));
}

/// One running notification. Its end is counted, and cleaned up behind, also when a handler throws; an
/// observable that is gone by then is left alone.
class ObservationAccess::Notification {
public:
    Notification(Observable& observable, ObserverList& list, NotifyingThread& thread)
        : counted_(observable, list, thread), walk_(list, observable, thread) {}
    Notification(Notification const&) = delete;
    Notification& operator=(Notification const&) = delete;
    ~Notification() {
        if (!isObservableAlive())
            counted_.observable = nullptr;
    }

    /// The next link that is to be told, and how. Null also when the observable or the list has ended.
    ObserverPath* next(RegisteredAction::Call& call) {
        ObserverPath* path = nullptr;
        do
            path = walk_.nextPlaced();
        while (path != nullptr && (call = callOf(*path)) == RegisteredAction::Call::None);
        return path;
    }
    /// Whether the observable or the list has ended.
    bool isOver() const { return walk_.hasLostList(); }

    static bool isPost(Observable const& observable, ObserverList const& list) {
        return &list == findList(observable, false);
    }

    static RegisteredAction::Call callOf(ObserverPath const& path) {
        if ((path.flags_ & (ObserverPath::ACTIVE | ObserverPath::REMOVED)) != ObserverPath::ACTIVE ||
            path.observer_ == nullptr || path.action_ == nullptr)
            return RegisteredAction::Call::None;
        return path.action_->call.load(std::memory_order_relaxed);
    }

private:
    /// The notification as one of those that run. The last one to end cleans up, when its walk has ended.
    struct Counted {
        Counted(Observable& notified, ObserverList const& list, NotifyingThread& itsThread)
            : observable(&notified), thread(itsThread), isPostList(isPost(notified, list)) {
            if (depth() == std::numeric_limits<std::uint16_t>::max())
                throw std::length_error("the notifications of an observable nest too deep");
            setDepth(depth() + 1);
        }
        Counted(Counted const&) = delete;
        Counted& operator=(Counted const&) = delete;
        ~Counted() {
            if (observable == nullptr)
                return;
            setDepth(depth() - 1);
            if (depth() == 0)
                observable->finishNotification(isPostList, thread);
        }

        // Others may look at the depth, but the walks of one observable belong to one thread at a time: no
        // need of the cost of an atomic increment.
        unsigned depth() const { return observable->depth_.load(std::memory_order_relaxed); }
        void setDepth(unsigned depth) const {
            observable->depth_.store(static_cast<std::uint16_t>(depth), std::memory_order_relaxed);
        }

        Observable* observable; ///< null when it is gone
        NotifyingThread& thread;
        bool isPostList;
    };

    bool isObservableAlive() const { return walk_.observable() != nullptr; }

    Counted counted_;
    ObserverWalk walk_;
};

void Observable::notifyPreObservers(std::shared_ptr<ObservingObject> const& cause,
                                    std::vector<NotificationResult>* results) {
    ObservationAccess::notifyPre(*this, cause, results, notifyingThread);
}

void Observable::notifyPostObservers(std::shared_ptr<ObservingObject> const& cause,
                                     std::vector<NotificationResult>* results) {
    ObservationAccess::notifyPost(*this, cause, results, notifyingThread);
}

void Observable::notifySequence(std::shared_ptr<ObservingObject> const& cause, ObserverList* list,
                                std::vector<NotificationResult>* results) {
    ObservationAccess::notify(*this, list, cause, results, notifyingThread);
}

// In most cases there is nothing to do; that is found out here, where it costs least.
inline void Observable::finishNotification(bool isPost, NotifyingThread& thread) noexcept {
    auto const isQuiet = [](ObserverList const& list) {
        return list.rep_ == nullptr || list.rep_->isQuiet();
    };
    if ((flags_ & (isPost ? CLEAN_PRE | CLEAN_POST : CLEAN_PRE)) != 0 ||
        (params_ != nullptr && (!isQuiet(params_->postList_) || !isQuiet(params_->preList_))))
        cleanUp(isPost, thread);
}

void ObservationAccess::notifyPost(Observable& observable, std::shared_ptr<ObservingObject> const& cause,
                                   std::vector<Observable::NotificationResult>* results,
                                   NotifyingThread& thread) {
    if (observable.params_ != nullptr)
        notify(observable, &observable.params_->postList_, cause, results, thread);
    else if (observable.isEnabled())
        observable.finishNotification(true, thread);
}

namespace {

/// Runs the actions of the links of one walk.
class ActionRunner {
public:
    ActionRunner(Observable& observable, ObservingObject* cause) : observable_(observable), causer_(cause) {
        if (cause != nullptr)
            cause_ = *cause;
    }

    /// Keeps an action with its group while it runs. Returns whether that of the previous one was let go:
    /// foreign code may have gone with it.
    bool hold(std::shared_ptr<RegisteredAction> const& action) {
        if (held_ == action)
            return false;
        held_ = action;
        return true;
    }

    /// Tells an observer. Afterwards neither it nor the action need exist any more.
    Action::ExecReturn run(RegisteredAction::Call call, RegisteredAction const& action, Observer& observer) {
        if (call == RegisteredAction::Call::Execute) [[unlikely]] {
            Action::ExecReturn const answer = action.action->execute(observable_, observer, cause_);
            causer_ = cause_ ? &cause_->get() : nullptr; // an action may change it for those that follow
            return answer;
        }
        if (causer_ == &observer) [[unlikely]]
            return Action::ExecNotHandled;
        auto cause = cause_; // an observer may change what it is given
        return call == RegisteredAction::Call::ChangedNotify ? observer.changedNotify(observable_, cause)
                                                             : observer.toChangeNotify(observable_, cause);
    }

    /// The same, and what it answered becomes the last result.
    [[gnu::noinline, gnu::cold]] Action::ExecReturn
    run(RegisteredAction::Call call, RegisteredAction const& action, Observer& observer,
        std::vector<Observable::NotificationResult>& results) {
        std::weak_ptr<Observer> told = std::static_pointer_cast<Observer>(observer.shared_from_this());
        Action::ExecReturn const answer = run(call, action, observer);
        results.push_back({std::move(told), answer});
        return answer;
    }

private:
    Observable& observable_;
    ObservingObject* causer_; ///< the object of `cause_`, null without one
    std::optional<std::reference_wrapper<ObservingObject>> cause_;
    std::shared_ptr<RegisteredAction> held_;
};

} // namespace

// Nobody is locked for the walk: a link learns of the end of its observer, the walk of the end of the list
// and of the observable, and after a call neither that observer nor that link is touched again. What the walk
// needs of the caller's and of the link's is held: the cause, and the action with its group.
void ObservationAccess::notify(Observable& observable, ObserverList* list,
                               std::shared_ptr<ObservingObject> const& cause,
                               std::vector<Observable::NotificationResult>* results,
                               NotifyingThread& thread) {
    if (list == nullptr || !observable.isEnabled())
        return;
    if (list->rep_ == nullptr || list->rep_->paths.empty()) {
        if (Notification::isPost(observable, *list) && !isWalking(observable))
            observable.finishNotification(true, thread);
        return;
    }
    ReleasedPaths released; // last: foreign code that goes with them may end the observable
    if (list->rep_->walks == nullptr && !list->rep_->isSettled())
        list->rep_->settle(released);
    std::shared_ptr<ObservingObject> const heldCause = cause;
    ActionRunner runner(observable, heldCause.get());
    Notification notification(observable, *list, thread);
    auto call = RegisteredAction::Call::None;
    while (ObserverPath* const path = notification.next(call)) {
        if (call == RegisteredAction::Call::Execute && runner.hold(path->action_) &&
            (notification.isOver() || (call = Notification::callOf(*path)) == RegisteredAction::Call::None))
            [[unlikely]]
            continue;
        Observer& observer = *path->observer_;
        Action::ExecReturn answer = Action::ExecOk;
        if (results == nullptr) [[likely]]
            answer = runner.run(call, *path->action_, observer);
        else
            answer = runner.run(call, *path->action_, observer, *results);
        if (answer == Action::ExecStop) [[unlikely]]
            break;
    }
}

// Links and notes are released last: foreign code may go with them, and the observable with that.
void Observable::cleanUp(bool isPost, NotifyingThread& thread) noexcept {
    unsigned const flags = flags_;
    flags_ =
        static_cast<std::uint16_t>(flags & ~(unsigned{CLEAN_PRE} | (isPost ? unsigned{CLEAN_POST} : 0U)));
    auto const isInOrder = [](ObserverList const* list) {
        return list == nullptr || list->rep_ == nullptr ||
               (list->rep_->isSettled() && list->rep_->numActionless == 0);
    };
    bool const hasExpired = isPost && (flags & CLEAN_POST) != 0 && thread.notes != nullptr;
    if (!hasExpired && std::ranges::all_of(ObservationAccess::listsOf(*this), isInOrder))
        return;
    ReleasedPaths releasedPaths;
    ObservationAccess::Infos releasedInfos =
        hasExpired ? ObservationAccess::takeInfos(*this, false, thread) : ObservationAccess::Infos();
    for (ObserverList* const list : ObservationAccess::listsOf(*this)) {
        if (list == nullptr || list->rep_ == nullptr || list->rep_->isQuiet())
            continue;
        if ((flags & (isPreList(*list) ? CLEAN_PRE : CLEAN_POST)) != 0)
            list->rep_->killActionless();
        if (list->rep_->walks == nullptr)
            list->rep_->settle(releasedPaths);
    }
    ObservationAccess::release(releasedInfos);
}

} // namespace Zorvan::AttributeContainer
