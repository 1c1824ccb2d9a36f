// SPDX-License-Identifier: MIT
#include <AttributeContainer/Observer.h>

#include "observation/LinkReading.h"
#include "observation/ObservationAccess.h"
#include "observation/ObserverListRep.h"

#include <AttributeContainer/Observable.h>
#include <AttributeContainer/ObserverRelationTable.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

namespace {

bool isGraphic(char character) {
    auto const byte = static_cast<unsigned char>(character);
    return byte > 0x20 && byte != 0x7F;
}

std::vector<std::string_view> componentsOf(std::string_view path) {
    std::vector<std::string_view> components;
    while (!path.empty()) {
        std::size_t const length = std::min(path.find('/'), path.size());
        if (length > 0)
            components.push_back(path.substr(0, length));
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    return components;
}

// An object path as seen from another one.
std::string relativePath(std::string const& path, std::string const& from) {
    std::vector<std::string_view> const target = componentsOf(path);
    std::vector<std::string_view> const start = componentsOf(from);
    if (start.empty())
        return path;
    auto const [here, there] = std::ranges::mismatch(start, target);
    std::string result;
    for (auto step = here; step != start.end(); ++step)
        result += "~/";
    for (auto step = there; step != target.end(); ++step) {
        result += *step;
        if (step + 1 != target.end())
            result += '/';
    }
    return result;
}

} // namespace

Observer::Observer(std::optional<std::reference_wrapper<Observer const>> const& source) {
    if (source)
        Observer::copyFrom(*source);
}

// Calls nothing virtual: derived parts are gone, and so may be those of the observables.
Observer::~Observer() {
    ObserverRelationTableObserver::forget(*this);
    for (ObserverPath* link = params_.firstLink_; link != nullptr; link = link->nextOfObserver_) {
        ObserverList::Rep* const list = link->list_ == nullptr ? nullptr : link->list_->rep_.get();
        if (list != nullptr)
            list->leaveIndex(*link);
        link->observer_ = nullptr;
        link->set(ObserverPath::ACTIVE, false);
        if (list != nullptr)
            list->kill(*link);
    }

    // A few links of one list are taken out one by one, many at once. Links that cannot be taken out now,
    // because a walk runs, are dead and wait.
    constexpr std::size_t few = 4;
    ReleasedPaths released;
    for (ObserverPath *link = params_.firstLink_, *next = nullptr; link != nullptr; link = next) {
        next = link->nextOfObserver_;
        if (link->list_ == nullptr || link->list_->rep_->walks != nullptr)
            continue;
        ObserverList::Rep& list = *link->list_->rep_;
        if (list.numRemoved > few)
            list.purge(released);
        else
            released.add(list.takeAt(list.positionOf(*link)).release());
    }
}

std::weak_ptr<ObservingObject> Observer::inqObserver(std::optional<std::string const> const& path) {
    return std::const_pointer_cast<ObservingObject>(std::as_const(*this).inqObserver(path).lock());
}

std::weak_ptr<ObservingObject const>
Observer::inqObserver(std::optional<std::string const> const& path) const {
    if (!path || path->empty())
        return weak_from_this();
    auto const first = std::ranges::find_if(*path, isGraphic);
    std::string const rest(first, path->end());
    if (rest.empty())
        return {};
    if (rest.front() != '/' && rest.front() != '#')
        return ObservationAccess::walkPath(*this, rest);
    std::shared_ptr<Observer> const root = PathRootScope::effectiveRoot();
    if (root == nullptr)
        return {};
    if (rest.front() == '#') {
        // The root hands on what it does not know itself: there is nobody else to ask.
        if (root.get() == this)
            return {};
        return std::as_const(*root).inqObserver(rest);
    }
    // All slashes at once, so that the root does not come back here for the next one.
    auto const behind = std::ranges::find_if(rest, [](char c) { return c != '/' && isGraphic(c); });
    return std::as_const(*root).inqObserver(std::string(behind, rest.end()));
}

std::string const& Observer::getStaticClassName() {
    static std::string const& name = *new std::string("Observer");
    return name;
}

std::string const& Observer::getClassName() const { return getStaticClassName(); }

int Observer::copyFrom(Observer const& other) {
    PreserveObserverRelation const scope;
    if (&other != this && !other.params_.empty())
        ObserverRelationTableObserver::current()->record(other, *this);
    return 1;
}

Action::ExecReturn Observer::changedNotify(Observable&,
                                           std::optional<std::reference_wrapper<ObservingObject>>&) {
    return Action::ExecNotHandled;
}

Action::ExecReturn Observer::toChangeNotify(Observable&,
                                            std::optional<std::reference_wrapper<ObservingObject>>&) {
    return Action::ExecNotHandled;
}

std::optional<std::string> Observer::inqDisplayPath() { return std::nullopt; }

std::optional<std::string> Observer::inqObjPath() { return std::nullopt; }

bool Observer::checkLocking(ActionForCheckLocking const&) const { return true; }

void Observer::informDelete(Observable const& observable) { informRmObserve(observable); }

std::optional<std::reference_wrapper<Observer>> Observer::lookupSelf() { return *this; }

// The virtual forms are declared for changeable objects; asking changes nothing.
std::string Observer::getName() const { return const_cast<Observer*>(this)->getName(); }

std::optional<std::string> Observer::inqDisplayPath() const {
    return const_cast<Observer*>(this)->inqDisplayPath();
}

std::optional<std::string> Observer::inqObjPath() const { return const_cast<Observer*>(this)->inqObjPath(); }

std::optional<std::string> Observer::inqObjPath(Observer const* other) const {
    std::optional<std::string> own = inqObjPath();
    if (other == nullptr)
        return own;
    std::optional<std::string> const from = other->inqObjPath();
    if (!from)
        return own;
    if (own)
        return relativePath(*own, *from);
    std::string name = getName();
    if (other->inqObserver(name).expired())
        return std::nullopt;
    return name;
}

bool Observer::informAddObserve(Observable& observable) {
    auto const shared = std::static_pointer_cast<Observable>(observable.shared_from_this());
    params_.add(shared, observable);
    return true;
}

void Observer::informRmObserve(std::optional<std::reference_wrapper<Observable const>> observable) {
    if (!observable)
        return;
    auto const owner = observable->get().shared_from_this();
    ObservationAccess::dropEntry(*this, *observable);
}

void Observer::informRmObserveAll(std::optional<std::reference_wrapper<Observable const>> observable) {
    if (!observable)
        return;
    auto const owner = observable->get().shared_from_this();
    ObservationAccess::dropEntries(*this, *observable);
}

std::size_t ObservationAccess::numEntries(Observer const& observer) { return observer.params_.numEntries(); }

void ObservationAccess::dropEntry(Observer& observer, Observable const& observable) noexcept {
    observer.params_.removeLast(observable);
}

void ObservationAccess::dropEntries(Observer& observer, Observable const& observable) noexcept {
    while (observer.params_.removeLast(observable)) {
    }
}

void Observer::rmAllObservers(bool) {
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock();
    for (auto const& observable : params_.distinctObservables(false))
        observable->rmObserver(*this);
    params_.clear();
}

std::optional<std::reference_wrapper<Observer>> Observer::currentPathRoot() {
    std::shared_ptr<Observer> const root = ObservationAccess::currentPathRoot();
    if (root == nullptr)
        return std::nullopt;
    return *root;
}

} // namespace Zorvan::AttributeContainer
