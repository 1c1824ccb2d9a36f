// SPDX-License-Identifier: MIT
#include <AttributeContainer/ObserverPath.h>

#include "observation/LinkReading.h"
#include "observation/ObservationAccess.h"
#include "observation/ObserverListRep.h"
#include "observation/RegisteredAction.h"

#include <AttributeContainer/ActionContainer.h>
#include <AttributeContainer/Observable.h>
#include <AttributeContainer/Observer.h>

#include <utility>

namespace Zorvan::AttributeContainer {

/// Around a change of what a listed link is found by, or of its liveness.
class ObserverPath::Rekeying {
public:
    explicit Rekeying(ObserverPath& path) : path_(path) {
        if (path_.list_ != nullptr)
            node_ = path_.list_->rep_->leaveIndex(path_);
    }
    Rekeying(Rekeying const&) = delete;
    Rekeying& operator=(Rekeying const&) = delete;
    ~Rekeying() {
        if (path_.list_ == nullptr)
            return;
        path_.list_->rep_->enterIndex(path_, std::move(node_));
        path_.list_->rep_->stateChanged(path_);
    }

private:
    ObserverPath& path_;
    ObserverList::Rep::Index::node_type node_;
};

ObserverPath::ObserverPath() = default;

ObserverPath::ObserverPath(std::optional<std::reference_wrapper<ObservingObject>> owner,
                           std::optional<std::reference_wrapper<Observer>> observer, short priority,
                           std::uint64_t actionToken)
    : priority_(priority), flags_(0), owner_(owner ? &owner->get() : nullptr),
      action_(ObservationAccess::action(actionToken)) {
    if (observer) {
        holdReference(*observer);
        set(ACTIVE, true);
    }
}

ObserverPath::ObserverPath(std::optional<std::reference_wrapper<ObservingObject>> owner,
                           std::optional<std::string const> const& path, short priority,
                           std::uint64_t actionToken)
    : priority_(priority), flags_(0), owner_(owner ? &owner->get() : nullptr),
      action_(ObservationAccess::action(actionToken)) {
    if (path) {
        text_ = std::make_unique<std::string>(*path);
        set(ACTIVE, lookupObserver().has_value());
    }
}

ObserverPath::ObserverPath(std::optional<std::reference_wrapper<ObservingObject>> owner,
                           ObserverPath const& source)
    : ObserverPath(source) {
    // NOLINTNEXTLINE(cppcoreguidelines-prefer-member-initializer): another constructor has initialized it
    owner_ = owner ? &owner->get() : nullptr;
}

ObserverPath::ObserverPath(ObserverPath const& other) : flags_(0), owner_(other.owner_) {
    std::shared_ptr<RegisteredAction> const none = copyFrom(other);
}

ObserverPath& ObserverPath::operator=(ObserverPath const& other) {
    if (this == &other || has(REMOVED))
        return *this;
    std::shared_ptr<RegisteredAction> released;
    if (list_ == nullptr) {
        owner_ = other.owner_;
        released = copyFrom(other);
        return *this;
    }
    Hold const hold(*this);
    ObserverPath copy(other); // comparing may run foreign code, and the other one may go with it
    copy.owner_ = owner_;
    ObserverPath* const equal = list_->rep_->findEqual(LinkKey(copy, list_->rep_->numText > 0), this);
    if (has(REMOVED))
        return *this;
    detach();
    short const priority = priority_;
    {
        Rekeying const rekeying(*this);
        released = takeFrom(copy, std::move(copy.text_));
    }
    if (priority != priority_)
        list_->rep_->priorityChanged();
    mergeInto(equal);
    return *this;
}

ObserverPath::~ObserverPath() { releaseReference(); }

// Returns the previous action: foreign code may go with it.
std::shared_ptr<RegisteredAction> ObserverPath::copyFrom(ObserverPath const& other) {
    auto text = other.text_ == nullptr ? nullptr : std::make_unique<std::string>(*other.text_);
    return takeFrom(other, std::move(text));
}

std::shared_ptr<RegisteredAction> ObserverPath::takeFrom(ObserverPath const& other,
                                                         std::unique_ptr<std::string> text) noexcept {
    Observer* const observer = other.has(BY_REFERENCE) ? other.observer_ : nullptr;
    releaseReference();
    text_ = std::move(text);
    priority_ = other.priority_;
    set(BY_REFERENCE, false);
    set(FROM_DOCUMENT, other.has(FROM_DOCUMENT));
    set(TEMPORARY, other.has(TEMPORARY));
    if (observer != nullptr)
        holdReference(*observer);
    return exchangeAction(other.hasAction() ? other.action_ : nullptr);
}

void ObserverPath::setTemporary(bool temporary) { set(TEMPORARY, temporary); }

Action const* ObserverPath::boundAction() const { return hasAction() ? action_->action : nullptr; }

std::uint64_t ObserverPath::getActionToken() const {
    return hasAction() ? action_->action->getToken() : ~std::uint64_t{0};
}

std::optional<std::string const> ObserverPath::getActionName() const {
    if (!hasAction())
        return std::nullopt;
    return action_->name;
}

void ObserverPath::setAction(std::uint64_t token) {
    Hold const hold(*this);
    std::shared_ptr<RegisteredAction> const action = ObservationAccess::action(token);
    ObserverPath* equal = nullptr;
    if (list_ != nullptr && !has(REMOVED)) {
        LinkKey key(*this, list_->rep_->numText > 0);
        key.heldAction = action;
        key.action = action == nullptr ? nullptr : action->action;
        equal = list_->rep_->findEqual(key, this);
    }
    std::shared_ptr<RegisteredAction> const released = exchangeAction(action);
    mergeInto(equal);
}

void ObserverPath::setAction(std::string const& name) { setAction(ActionContainer::the()->getToken(name)); }

// Returns the previous action: foreign code may go with it.
std::shared_ptr<RegisteredAction>
ObserverPath::exchangeAction(std::shared_ptr<RegisteredAction> action) noexcept {
    if (has(REMOVED))
        return nullptr;
    if (list_ != nullptr) {
        if (hasAction() && action == nullptr)
            ++list_->rep_->numActionless;
        else if (!hasAction() && action != nullptr)
            --list_->rep_->numActionless;
    }
    action_.swap(action);
    return action;
}

Observable* ObserverPath::owningObservable() const { return dynamic_cast<Observable*>(owner_); }

void ObserverPath::holdReference(Observer& observer) noexcept {
    releaseReference();
    observer_ = &observer;
    previousOfObserver_ = nullptr;
    nextOfObserver_ = std::exchange(observer.params_.firstLink_, this);
    if (nextOfObserver_ != nullptr)
        nextOfObserver_->previousOfObserver_ = this;
    set(BY_REFERENCE, true);
}

// The path stays "by reference", without an observer.
void ObserverPath::releaseReference() noexcept {
    set(ACTIVE, false);
    if (observer_ == nullptr)
        return;
    (previousOfObserver_ == nullptr ? observer_->params_.firstLink_ : previousOfObserver_->nextOfObserver_) =
        nextOfObserver_;
    if (nextOfObserver_ != nullptr)
        nextOfObserver_->previousOfObserver_ = previousOfObserver_;
    observer_ = nullptr;
}

// Makes a link inactive, and its observer forget it.
void ObserverPath::detach() noexcept {
    if (isLive())
        setActive(false); // throws only to make a link active
}

void ObserverPath::setActive(bool active) {
    if (list_ != nullptr && observer_ != nullptr && active != isActive()) {
        if (Observable* const owner = owningObservable()) {
            if (active)
                observer_->informAddObserve(*owner);
            else
                ObservationAccess::dropEntry(*observer_, *owner);
        }
    }
    set(ACTIVE, active);
    if (list_ != nullptr)
        list_->rep_->stateChanged(*this);
}

std::optional<std::string> ObserverPath::getPath() const {
    if (has(BY_REFERENCE))
        return observer_ == nullptr ? std::nullopt : observer_->inqObjPath();
    if (text_ == nullptr)
        return std::nullopt;
    return *text_;
}

std::shared_ptr<Observer> ObserverPath::resolve(ObservingObject* owner, std::string const& path) {
    std::shared_ptr<Observer> const root = ObservationAccess::currentPathRoot();
    std::optional<std::string const> const argument(path);
    std::weak_ptr<ObservingObject> found;
    if (root != nullptr)
        found = root->inqObserver(argument);
    else if (owner != nullptr)
        found = owner->inqObserver(argument);
    return std::dynamic_pointer_cast<Observer>(found.lock());
}

std::optional<std::reference_wrapper<Observer>> ObserverPath::lookupObserver() {
    Hold const hold(*this);
    if (!has(BY_REFERENCE) && !has(REMOVED)) {
        std::shared_ptr<Observer> const found = resolve(owner_, text_ == nullptr ? std::string() : *text_);
        // Resolving calls foreign code, which may have removed or resolved the link.
        ObserverPath* const equal = found == nullptr ? nullptr : findEqual(*found);
        if (found != nullptr && !has(BY_REFERENCE) && !has(REMOVED)) {
            {
                Rekeying const rekeying(*this);
                holdReference(*found);
                if (!has(FROM_DOCUMENT))
                    text_.reset();
            }
            mergeInto(equal);
            return *found;
        }
    }
    if (observer_ == nullptr)
        return std::nullopt;
    return *observer_;
}

void ObserverPath::setObserver(std::optional<std::reference_wrapper<Observer>> observer, bool) {
    if (observer)
        redirect(*observer, false);
}

void ObserverPath::redirect(Observer& observer, bool keepText) {
    if (has(REMOVED))
        return;
    Hold const hold(*this);
    std::shared_ptr<ObservingObject> const heldObserver = observer.weak_from_this().lock();
    ObserverPath* const equal = findEqual(observer);
    if (has(REMOVED))
        return;
    Observable* const owner = owningObservable();
    bool const activates = owner != nullptr || isActive();
    if (list_ != nullptr && owner != nullptr) {
        observer.informAddObserve(*owner);
        if (isLive())
            ObservationAccess::dropEntry(*observer_, *owner);
    }
    {
        Rekeying const rekeying(*this);
        holdReference(observer);
        set(ACTIVE, activates);
        if (!keepText || !has(FROM_DOCUMENT)) {
            text_.reset();
            set(FROM_DOCUMENT, false);
        }
    }
    mergeInto(equal);
}

// The other link of the list that equals this one once it names an observer by reference. Changes that may
// make a link equal to another one ask before they change it: comparing may run foreign code and need memory,
// and whatever it throws, nothing has changed. The caller holds the link.
ObserverPath* ObserverPath::findEqual(Observer& observer) const {
    if (list_ == nullptr || has(REMOVED))
        return nullptr;
    return list_->rep_->findEqual(LinkKey(*this, observer, list_->rep_->numText > 0), this);
}

// The link that was there before stays, and takes over that this one was active. This one is dead from now
// on, but stays in memory until its list settles: whoever redirects it still has it in his hands.
void ObserverPath::mergeInto(ObserverPath* other) noexcept {
    if (other == nullptr || list_ == nullptr || has(REMOVED) || other->has(REMOVED))
        return;
    if (isLive() && other->observer_ == observer_ && !other->isActive()) {
        // So does what the observer knows.
        other->set(ACTIVE, true);
        list_->rep_->stateChanged(*other);
        set(ACTIVE, false);
    }
    detach();
    list_->rep_->kill(*this);
}

bool ObserverPath::setObserverAsPath(std::optional<std::string const> path) {
    Hold const hold(*this);
    if (!has(BY_REFERENCE) || observer_ == nullptr)
        return false;
    std::optional<std::string> text;
    if (path)
        text = *path;
    else
        text = observer_->inqObjPath();
    if (!text || observer_ == nullptr)
        return false;
    auto stored = std::make_unique<std::string>(*text);
    ObserverPath* const equal =
        list_ == nullptr ? nullptr : list_->rep_->findEqual(LinkKey(*this, *std::move(text)), this);
    if (has(REMOVED) || observer_ == nullptr)
        return false;
    setText(std::move(stored), false);
    mergeInto(equal);
    return true;
}

void ObserverPath::setText(std::unique_ptr<std::string> text, bool fromDocument) noexcept {
    detach();
    Rekeying const rekeying(*this);
    releaseReference();
    set(BY_REFERENCE, false);
    set(FROM_DOCUMENT, fromDocument);
    text_ = std::move(text);
}

bool ObserverPath::activate() {
    Hold const hold(*this);
    if (isActive() || has(REMOVED) || !lookupObserver() || has(REMOVED) || owningObservable() == nullptr)
        return false;
    setActive(true);
    return true;
}

bool ObserverPath::deactivate() {
    if (!isActive() || !has(BY_REFERENCE) || owningObservable() == nullptr)
        return false;
    setActive(false);
    return true;
}

bool ObserverPath::operator==(ObserverPath const& other) const {
    // The key is that of a path string, if there is one: whoever holds a reference is asked last.
    return has(BY_REFERENCE) ? LinkKey(other, false).equals(*this) : LinkKey(*this, false).equals(other);
}

int ObserverPath::comp(ObserverPath const& a, ObserverPath const& b) {
    if (a.isLive() != b.isLive())
        return a.isLive() ? 1 : -1;
    return a.priority_ == b.priority_ ? 0 : a.priority_ > b.priority_ ? 1 : -1;
}

int ObserverPath::negComp(ObserverPath const& a, ObserverPath const& b) { return -comp(a, b); }

} // namespace Zorvan::AttributeContainer
