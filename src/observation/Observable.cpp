// SPDX-License-Identifier: MIT
#include <AttributeContainer/Observable.h>

#include "observation/ObservationAccess.h"
#include "observation/ObserverListRep.h"

#include <AttributeContainer/Observer.h>
#include <AttributeContainer/ObserverRelationTable.h>

#include <optional>
#include <stdexcept>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::uint64_t npos = ~std::uint64_t{0};

} // namespace

Observable::Params::Params() = default;

Observable::Params::~Params() = default;

bool Observable::Params::empty() const { return postList_.empty(); }

std::uint64_t Observable::Params::lookupContent(ObserverPath& path) const {
    std::uint64_t const found = postList_.lookup(path);
    return found == npos ? npos : postList_.rep_->logicalIndex(found);
}

Observable::ParamsEx::ParamsEx() = default;

Observable::ParamsEx::~ParamsEx() = default;

bool Observable::ParamsEx::empty() const { return Params::empty() && preList_.empty(); }

std::uint64_t Observable::ParamsEx::lookupContent(ObserverPath& path) const {
    std::uint64_t const inPost = Params::lookupContent(path);
    if (inPost != npos)
        return inPost + (preList_.rep_ == nullptr ? 0 : preList_.rep_->numLinks());
    std::uint64_t const inPre = preList_.lookup(path);
    return inPre == npos ? npos : preList_.rep_->logicalIndex(inPre);
}

Observable::Observable() = default;

Observable::Observable(std::optional<std::reference_wrapper<Observable const>> const& source) {
    if (source)
        Observable::copyFrom(*source);
}

// Calls nothing virtual: observers forget this observable, they are not told. Running walks learn that it is
// gone.
Observable::~Observable() {
    if (ObservationAccess::isWalking(*this))
        ObserverWalk::forget(*this);
    ObservationAccess::dropInfos(*this);
    for (ObserverList* list : {&params_.preList_, &params_.postList_}) {
        if (list->rep_ == nullptr)
            continue;
        for (ObserverPath const* const path : list->rep_->paths)
            if (path->isLive())
                ObservationAccess::dropEntry(*path->observer_, *this);
        list->rep_.reset();
    }
}

std::weak_ptr<ObservingObject const>
Observable::inqObserver(std::optional<std::string const> const& path) const {
    return path ? ObservationAccess::walkPath(*this, *path) : std::weak_ptr<ObservingObject const>();
}

std::weak_ptr<ObservingObject const> ObservationAccess::walkPath(ObservingObject const& start,
                                                                 std::string_view path) {
    if (path.find('/') == std::string_view::npos)
        return {};
    std::weak_ptr<ObservingObject const> reached = start.weak_from_this();
    std::shared_ptr<ObservingObject const> current;
    ObservingObject const* object = &start;
    while (!path.empty()) {
        std::size_t const length = path.find('/');
        std::string_view const component = path.substr(0, length);
        path.remove_prefix(length == std::string_view::npos ? path.size() : length + 1);
        if (component.empty())
            continue;
        reached = object->inqObserver(std::optional<std::string const>(component));
        current = reached.lock();
        object = current.get();
        if (object == nullptr)
            return {};
    }
    return reached;
}

std::optional<std::string> Observable::inqObjPath() { return std::nullopt; }

// The virtual forms are declared for changeable objects; asking changes nothing.
std::optional<std::reference_wrapper<Observer const>> Observable::lookupObject() const {
    return const_cast<Observable*>(this)->lookupObject();
}

std::string Observable::getName() const { return const_cast<Observable*>(this)->getName(); }

std::optional<std::string> Observable::inqObjPath() const {
    return const_cast<Observable*>(this)->inqObjPath();
}

Observable::AddResult Observable::addObserver(Observer& observer, short priority, std::uint64_t actionToken,
                                              bool temporary) {
    auto path = std::make_unique<ObserverPath>(*this, observer, priority, actionToken);
    path->setTemporary(temporary);
    return addObserver(std::move(path), true);
}

Observable::AddResult Observable::addPreObserver(Observer& observer, short priority,
                                                 std::uint64_t actionToken, bool temporary) {
    auto path = std::make_unique<ObserverPath>(*this, observer, priority, actionToken);
    path->setTemporary(temporary);
    return addPreObserver(std::move(path), true);
}

Observable::AddResult Observable::addObserver(std::string const& path, short priority,
                                              std::uint64_t actionToken, bool temporary) {
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock(); // resolving may be foreign
    auto made = std::make_unique<ObserverPath>(*this, path, priority, actionToken);
    made->setTemporary(temporary);
    return addObserver(std::move(made), true);
}

Observable::AddResult Observable::addPreObserver(std::string const& path, short priority,
                                                 std::uint64_t actionToken, bool temporary) {
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock(); // resolving may be foreign
    auto made = std::make_unique<ObserverPath>(*this, path, priority, actionToken);
    made->setTemporary(temporary);
    return addPreObserver(std::move(made), true);
}

Observable::AddResult Observable::addObserver(std::unique_ptr<ObserverPath> path, bool sorted) {
    return addTo(params_.postList_, std::move(path), sorted);
}

Observable::AddResult Observable::addPreObserver(std::unique_ptr<ObserverPath> path, bool sorted) {
    return addTo(params_.preList_, std::move(path), sorted);
}

Observable::AddResult Observable::addTo(ObserverList& list, std::unique_ptr<ObserverPath> path, bool sorted) {
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock();
    ReleasedPaths released;
    ObserverPath* const stored = insertInto(list, std::move(path), sorted, released);
    if (stored == nullptr)
        return AlreadyPresent;
    if (!stored->isLive())
        return AddedInactive;
    try {
        stored->observer_->informAddObserve(*this);
    } catch (...) {
        std::unique_ptr<ObserverPath> const taken = list.rep_->takeAt(list.rep_->positionOf(*stored));
        throw;
    }
    return Added;
}

ObserverPath* Observable::informAddPostObservedBy(std::unique_ptr<ObserverPath> path, bool sorted) {
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock();
    ReleasedPaths released;
    return insertInto(params_.postList_, std::move(path), sorted, released);
}

ObserverPath* Observable::informAddPreObservedBy(std::unique_ptr<ObserverPath> path, bool sorted) {
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock();
    ReleasedPaths released;
    return insertInto(params_.preList_, std::move(path), sorted, released);
}

ObserverPath* Observable::insertInto(ObserverList& list, std::unique_ptr<ObserverPath> path, bool sorted,
                                     ReleasedPaths& released) {
    if (path == nullptr)
        return nullptr;
    path->owner_ = this;
    ObserverList::Rep& rep = list.rep();
    if (rep.findEqual(LinkKey(*path, rep.numText > 0), nullptr) != nullptr)
        return nullptr;
    return sorted ? rep.insertSorted(std::move(path), list, released)
                  : rep.insertAt(rep.paths.size(), std::move(path), list);
}

void Observable::setCleanUp(ObserverList const& list) {
    bool const isPre = &list == &params_.preList_;
    flags_ = static_cast<std::uint16_t>(flags_ | (isPre ? CLEAN_PRE : CLEAN_POST));
}

// While anybody goes through the list, the link stays in memory. No foreign code runs before `released` goes,
// and no memory is needed: what removes links must not fail half way.
void Observable::removeFrom(ObserverList& list, ObserverPath& link, ReleasedPaths& released) noexcept {
    ObserverList::Rep& rep = *list.rep_;
    if (ObservationAccess::isWalking(*this) || rep.walks != nullptr) {
        setCleanUp(list);
        rep.kill(link);
        return;
    }
    released.add(rep.takeAt(rep.positionOf(link)).release());
}

void Observable::removeOf(Observer const& observer, ObserverList& list, ReleasedPaths& released) noexcept {
    if (list.empty())
        return;
    while (ObserverPath* const link = list.rep_->anyOf(observer))
        removeFrom(list, *link, released);
}

void Observable::rmObserver(Observer& observer) {
    ReleasedPaths released;
    removeOf(observer, params_.postList_, released);
    removeOf(observer, params_.preList_, released);
    ObservationAccess::dropEntries(observer, *this);
}

void Observable::informRmObservedBy(Observer& observer) {
    ReleasedPaths released;
    removeOf(observer, params_.postList_, released);
    removeOf(observer, params_.preList_, released);
}

void Observable::informRmObservedBy(Observer& observer, ObserverList& list) {
    ReleasedPaths released;
    removeOf(observer, list, released);
}

/// The links of both lists that equal a given one.
struct Observable::EqualLinks {
    std::vector<ObserverPath*> post, pre;
};

// What fails does so before anything is removed. Comparing may run foreign code, which may remove what was
// found already.
Observable::EqualLinks Observable::linksEqual(LinkKey const& key) {
    EqualLinks found;
    if (!params_.postList_.empty())
        params_.postList_.rep_->collectEqual(key, found.post);
    if (params_.preList_.empty())
        return found;
    std::optional<ObserverWalk> keep;
    if (!found.post.empty())
        keep.emplace(params_.postList_);
    params_.preList_.rep_->collectEqual(key, found.pre);
    std::erase_if(found.post, [](ObserverPath const* link) { return link->has(ObserverPath::REMOVED); });
    return found;
}

void Observable::informRmObservedBy(ObserverPath const& path) {
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock();
    ReleasedPaths released;
    EqualLinks const found = linksEqual(LinkKey(path, true));
    if (!found.pre.empty())
        removeFrom(params_.preList_, *params_.preList_.rep_->lastOf(found.pre), released);
    if (!found.post.empty())
        removeFrom(params_.postList_, *params_.postList_.rep_->lastOf(found.post), released);
}

std::pair<ObserverList*, std::uint64_t> Observable::locate(std::uint64_t index) const {
    auto& self = const_cast<Observable&>(*this);
    for (ObserverList* list : {&self.params_.preList_, &self.params_.postList_}) {
        if (list->rep_ == nullptr)
            continue;
        if (index < list->rep_->numLinks())
            return {list, list->rep_->physicalIndex(index)};
        index -= list->rep_->numLinks();
    }
    throw std::out_of_range("invalid vector subscript");
}

void Observable::removePath(std::uint64_t index) {
    auto const [list, position] = locate(index);
    ObserverPath& path = list->at(position);
    ReleasedPaths released;
    path.detach();
    removeFrom(*list, path, released);
    setCleanUp(*list);
}

bool Observable::removePath(ObserverPath& path) {
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock();
    ReleasedPaths released;
    EqualLinks const found = linksEqual(LinkKey(path, true)); // the argument may be one of those that go
    for (auto const& [list, links] :
         {std::pair(&params_.postList_, &found.post), std::pair(&params_.preList_, &found.pre)}) {
        for (ObserverPath* const link : *links) {
            link->detach();
            removeFrom(*list, *link, released);
        }
        if (!links->empty())
            setCleanUp(*list);
    }
    return !found.post.empty() || !found.pre.empty();
}

std::uint64_t Observable::getNumPrePaths() const {
    return params_.preList_.rep_ == nullptr ? 0 : params_.preList_.rep_->numLinks();
}

std::uint64_t Observable::getNumPostPaths() const {
    return params_.postList_.rep_ == nullptr ? 0 : params_.postList_.rep_->numLinks();
}

ObserverPath& Observable::getPath(std::uint64_t index) {
    auto const [list, position] = locate(index);
    return list->at(position);
}

ObserverPath const& Observable::getPath(std::uint64_t index) const {
    auto const [list, position] = locate(index);
    return list->at(position);
}

std::uint64_t Observable::lookupPath(ObserverPath& path) const {
    std::shared_ptr<ObservingObject const> const self = weak_from_this().lock(); // comparing may be foreign
    return params_.lookupContent(path);
}

bool ObservationAccess::hasUnknownLinks(Observable const& observable) {
    auto const hasSome = [](ObserverList const& list) {
        return list.rep_ != nullptr && list.rep_->unknown != nullptr;
    };
    return hasSome(observable.params_.preList_) || hasSome(observable.params_.postList_);
}

std::shared_ptr<Observer> ObservationAccess::follower(Observable const& observable) {
    auto const& rep = observable.params_.postList_.rep_;
    return rep != nullptr && rep->follower != nullptr ? *rep->follower : nullptr;
}

void ObservationAccess::keepFollower(Observable& observable, std::shared_ptr<Observer> follower) {
    observable.params_.postList_.rep().follower =
        std::make_unique<std::shared_ptr<Observer>>(std::move(follower));
}

std::shared_ptr<Observer> ObservationAccess::takeFollower(Observable& observable) noexcept {
    auto const& rep = observable.params_.postList_.rep_;
    return rep != nullptr && rep->follower != nullptr ? std::move(*rep->follower) : nullptr;
}

void Observable::resortPreObservers() { params_.preList_.sort(); }

void Observable::resortPostObservers() { params_.postList_.sort(); }

bool Observable::updateObserverLists(bool sortAlways) {
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock();
    bool changed = false;
    bool const postResolved = updateList(params_.postList_, changed);
    bool const preResolved = updateList(params_.preList_, changed);
    if (changed || sortAlways) {
        params_.preList_.sort();
        params_.postList_.sort();
    }
    return postResolved && preResolved;
}

bool Observable::updateList(ObserverList& list, bool& changed) {
    bool resolved = true;
    if (list.empty())
        return resolved;
    ObserverWalk walk(list);
    while (ObserverPath* const path = walk.next()) {
        if (!path->has(ObserverPath::BY_REFERENCE) && !path->lookupObserver())
            resolved = false;
        else if (path->activate())
            changed = true;
    }
    return resolved;
}

std::uint64_t Observable::exchangePtr(ObserverRelationTableObserver& table) {
    std::shared_ptr<ObservingObject> const self = weak_from_this().lock();
    return exchangeIn(params_.postList_, table) + exchangeIn(params_.preList_, table);
}

// The string that a link was read with still says where the copy stands, seen from the copied tree.
std::uint64_t Observable::exchangeIn(ObserverList& list, ObserverRelationTableObserver& table) {
    std::uint64_t exchanged = 0;
    if (list.empty())
        return exchanged;
    ObserverWalk walk(list);
    while (ObserverPath* const path = walk.next()) {
        if (path->isActive() || path->observer_ == nullptr)
            continue;
        if (Observer* const copy = table.lookup(*path->observer_)) {
            path->redirect(*copy, true);
            ++exchanged;
        }
    }
    return exchanged;
}

// Observers are told of the links that are there now. What they add meanwhile is removed without a word, or
// one that always comes back would never be got rid of.
void Observable::rmAllObservers(bool) {
    std::shared_ptr<ObservingObject> const self = shared_from_this();
    ReleasedPaths released;
    std::vector<ObserverPath*> links; // all that need memory for is done before anybody is told
    links.reserve(params_.preList_.size() + params_.postList_.size());
    // When an observer throws, the others are not told any more, but nothing stays here.
    struct Rest {
        Observable& observable;
        ReleasedPaths& released;
        ~Rest() {
            for (ObserverList* const list : {&observable.params_.preList_, &observable.params_.postList_}) {
                if (list->rep_ == nullptr)
                    continue;
                for (ObserverPath* const link : list->rep_->paths) {
                    link->detach();
                    list->rep_->kill(*link);
                }
                list->rep_->purge(released);
            }
            ObservationAccess::dropInfos(observable);
        }
    } const rest{*this, released};
    std::optional<ObserverWalk> walks[2]; // keep what is removed meanwhile
    for (ObserverList* const list : {&params_.preList_, &params_.postList_}) {
        if (list->empty())
            continue;
        walks[list == &params_.postList_].emplace(*list);
        links.insert(links.end(), list->rep_->paths.begin(), list->rep_->paths.end());
    }
    for (ObserverPath* const link : links) {
        if (!link->isLive())
            continue;
        std::size_t const entries = ObservationAccess::numEntries(*link->observer_);
        link->observer_->informDelete(*this);
        // An observer's own class may have kept the entry, which goes with the link.
        if (link->isLive() && ObservationAccess::numEntries(*link->observer_) >= entries)
            ObservationAccess::dropEntry(*link->observer_, *this);
        link->list_->rep_->kill(*link);
    }
}

bool Observable::isNotificationEnabled() const { return (flags_ & ENABLED) != 0; }

void Observable::setNotificationEnabled(bool enabled) {
    flags_ = static_cast<std::uint16_t>(enabled ? flags_ | ENABLED : flags_ & ~unsigned{ENABLED});
}

} // namespace Zorvan::AttributeContainer
