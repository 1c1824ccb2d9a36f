// SPDX-License-Identifier: MIT
#include <AttributeContainer/Observable.h>

#include "observation/ObservationAccess.h"
#include "observation/ObserverListRep.h"
#include "observation/RegisteredAction.h"

#include <AttributeContainer/Observer.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>

namespace Zorvan::AttributeContainer {

bool ObservationAccess::isPreWalking(Observable const& observable) {
    return isWalking(observable) && ObserverWalk::isNotifying(observable, *findList(observable, true));
}

/// One running notification. Its end is counted, and cleaned up behind, also when a handler throws; an
/// observable that is gone by then is left alone.
class ObservationAccess::Notification {
public:
    Notification(Observable& observable, ObserverList& list)
        : observable_(observable), isPost_(isPost(observable, list)) {
        if (observable.depth_ == std::numeric_limits<std::uint16_t>::max())
            throw std::length_error("the notifications of an observable nest too deep");
        walk_.emplace(list, &observable);
        ++observable.depth_;
    }
    Notification(Notification const&) = delete;
    Notification& operator=(Notification const&) = delete;
    ~Notification() {
        bool const isAlive = isObservableAlive();
        walk_.reset();
        if (isAlive && --observable_.depth_ == 0)
            observable_.finishNotification(isPost_);
    }

    ObserverPath* next() { return isOver() ? nullptr : walk_->next(); }
    /// Whether the observable or the list has ended.
    bool isOver() const { return !isObservableAlive() || walk_->hasLostList(); }

    static bool isPost(Observable const& observable, ObserverList const& list) {
        return &list == findList(observable, false);
    }

private:
    bool isObservableAlive() const { return walk_->observable() != nullptr; }

    Observable& observable_;
    bool isPost_;
    std::optional<ObserverWalk> walk_;
};

void Observable::notifyPreObservers(std::shared_ptr<ObservingObject> const& cause,
                                    std::vector<NotificationResult>* results) {
    notifySequence(cause, ObservationAccess::findList(*this, true), results);
}

void Observable::notifyPostObservers(std::shared_ptr<ObservingObject> const& cause,
                                     std::vector<NotificationResult>* results) {
    if (params_ != nullptr)
        notifySequence(cause, &params_->postList_, results);
    else if (isNotificationEnabled())
        finishNotification(true);
}

// Nobody is locked for the walk: a link learns of the end of its observer, the walk of the end of the list
// and of the observable, and after a call neither that observer nor that link is touched again. What the walk
// needs of the caller's and of the link's is held: the cause, and the action with its group.
void Observable::notifySequence(std::shared_ptr<ObservingObject> const& cause, ObserverList* list,
                                std::vector<NotificationResult>* results) {
    if (list == nullptr || !isNotificationEnabled())
        return;
    if (list->empty()) {
        if (ObservationAccess::Notification::isPost(*this, *list) && !ObservationAccess::isWalking(*this))
            finishNotification(true);
        return;
    }
    if (list->rep_->walks == nullptr) {
        ReleasedPaths released;
        list->rep_->settle(released);
    }
    std::shared_ptr<ObservingObject> const heldCause = cause;
    std::optional<std::reference_wrapper<ObservingObject>> causeReference;
    if (heldCause != nullptr)
        causeReference = *heldCause;
    std::shared_ptr<RegisteredAction> heldAction;
    ObservationAccess::Notification notification(*this, *list);
    while (ObserverPath* const path = notification.next()) {
        if (!path->isTold())
            continue;
        if (heldAction != path->action_) {
            // The group of the previous action may go here, and foreign code with it.
            heldAction = path->action_;
            if (notification.isOver() || !path->isTold())
                continue;
        }
        Observer& observer = *path->observer_;
        NotificationResult answer;
        if (results != nullptr)
            answer.observer = std::static_pointer_cast<Observer>(observer.shared_from_this());
        answer.result = heldAction->action->execute(*this, observer, causeReference);
        bool const stops = answer.result == Action::ExecStop;
        if (results != nullptr)
            results->push_back(std::move(answer));
        if (stops)
            break;
    }
}

// Links and notes are released last: foreign code may go with them, and the observable with that.
void Observable::finishNotification(bool isPost) noexcept {
    ReleasedPaths releasedPaths;
    ObservationAccess::Infos releasedInfos;
    unsigned flags = flags_;
    if (isPost && (flags & CLEAN_POST) != 0)
        releasedInfos = ObservationAccess::takeInfos(*this, false);
    for (ObserverList* const list : ObservationAccess::listsOf(*this)) {
        if (list == nullptr || list->rep_ == nullptr)
            continue;
        if ((flags & (isPreList(*list) ? CLEAN_PRE : CLEAN_POST)) != 0)
            list->rep_->killActionless();
        if (list->rep_->walks == nullptr)
            list->rep_->settle(releasedPaths);
    }
    flags &= ~(unsigned{CLEAN_PRE} | (isPost ? unsigned{CLEAN_POST} : 0U));
    flags_ = static_cast<std::uint16_t>(flags);
}

} // namespace Zorvan::AttributeContainer
