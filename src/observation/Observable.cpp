// SPDX-License-Identifier: MIT
#include <AttributeContainer/Observable.h>

#include "observation/ObservationAccess.h"
#include "observation/ObserverListRep.h"

#include <AttributeContainer/Observer.h>
#include <AttributeContainer/ObserverRelationTable.h>

#include <algorithm>
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

Observable::ParamsEx& Observable::made(std::unique_ptr<ParamsEx>& params) {
    if (params == nullptr)
        params = std::make_unique<ParamsEx>();
    return *params;
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
    for (ObserverList* const list : ObservationAccess::listsOf(*this)) {
        if (list == nullptr || list->rep_ == nullptr)
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
    std::shared_ptr<ObservingObject> const self = ObservationAccess::hold(*this); // resolving may be foreign
    auto made = std::make_unique<ObserverPath>(*this, path, priority, actionToken);
    made->setTemporary(temporary);
    return addObserver(std::move(made), true);
}

Observable::AddResult Observable::addPreObserver(std::string const& path, short priority,
                                                 std::uint64_t actionToken, bool temporary) {
    std::shared_ptr<ObservingObject> const self = ObservationAccess::hold(*this); // resolving may be foreign
    auto made = std::make_unique<ObserverPath>(*this, path, priority, actionToken);
    made->setTemporary(temporary);
    return addPreObserver(std::move(made), true);
}

Observable::AddResult Observable::addObserver(std::unique_ptr<ObserverPath> path, bool sorted) {
    return addTo(parEx().postList_, std::move(path), sorted);
}

Observable::AddResult Observable::addPreObserver(std::unique_ptr<ObserverPath> path, bool sorted) {
    return addTo(parEx().preList_, std::move(path), sorted);
}

Observable::AddResult Observable::addTo(ObserverList& list, std::unique_ptr<ObserverPath> path, bool sorted) {
    std::shared_ptr<ObservingObject> const self = ObservationAccess::hold(*this);
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
    std::shared_ptr<ObservingObject> const self = ObservationAccess::hold(*this);
    ReleasedPaths released;
    return insertInto(parEx().postList_, std::move(path), sorted, released);
}

ObserverPath* Observable::informAddPreObservedBy(std::unique_ptr<ObserverPath> path, bool sorted) {
    std::shared_ptr<ObservingObject> const self = ObservationAccess::hold(*this);
    ReleasedPaths released;
    return insertInto(parEx().preList_, std::move(path), sorted, released);
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

bool Observable::isPreList(ObserverList const& list) const {
    return &list == ObservationAccess::findList(*this, true);
}

void Observable::setCleanUp(bool isPre) {
    flags_ = static_cast<std::uint16_t>(flags_ | (isPre ? CLEAN_PRE : CLEAN_POST));
}

// While anybody goes through the list, the link stays in memory. No foreign code runs before `released` goes,
// and no memory is needed: what removes links must not fail half way.
void Observable::removeFrom(ObserverList& list, ObserverPath& link, ReleasedPaths& released) noexcept {
    ObserverList::Rep& rep = *list.rep_;
    if (ObservationAccess::isWalking(*this) || rep.walks != nullptr) {
        setCleanUp(isPreList(list));
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
    for (bool const isPre : {false, true})
        if (ObserverList* const list = ObservationAccess::findList(*this, isPre))
            removeOf(observer, *list, released);
    ObservationAccess::dropEntries(observer, *this);
}

void Observable::informRmObservedBy(Observer& observer) {
    ReleasedPaths released;
    for (bool const isPre : {false, true})
        if (ObserverList* const list = ObservationAccess::findList(*this, isPre))
            removeOf(observer, *list, released);
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
    if (ObservationAccess::hasPostObservers(*this))
        params_->postList_.rep_->collectEqual(key, found.post);
    if (!ObservationAccess::hasPreObservers(*this))
        return found;
    std::optional<ObserverWalk> keep;
    if (!found.post.empty())
        keep.emplace(params_->postList_);
    params_->preList_.rep_->collectEqual(key, found.pre);
    std::erase_if(found.post, [](ObserverPath const* link) { return link->has(ObserverPath::REMOVED); });
    return found;
}

void Observable::informRmObservedBy(ObserverPath const& path) {
    std::shared_ptr<ObservingObject> const self = ObservationAccess::hold(*this);
    ReleasedPaths released;
    EqualLinks const found = linksEqual(LinkKey(path, true));
    if (!found.pre.empty())
        removeFrom(params_->preList_, *params_->preList_.rep_->lastOf(found.pre), released);
    if (!found.post.empty())
        removeFrom(params_->postList_, *params_->postList_.rep_->lastOf(found.post), released);
}

std::pair<ObserverList*, std::uint64_t> Observable::locate(std::uint64_t index) const {
    for (ObserverList* const list : ObservationAccess::listsOf(*this)) {
        if (list == nullptr || list->rep_ == nullptr)
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
    setCleanUp(isPreList(*list));
}

bool Observable::removePath(ObserverPath& path) {
    std::shared_ptr<ObservingObject> const self = ObservationAccess::hold(*this);
    ReleasedPaths released;
    EqualLinks const found = linksEqual(LinkKey(path, true)); // the argument may be one of those that go
    for (bool const isPre : {false, true}) {
        auto const& links = isPre ? found.pre : found.post;
        for (ObserverPath* const link : links) {
            link->detach();
            removeFrom(*link->list_, *link, released);
        }
        if (!links.empty())
            setCleanUp(isPre);
    }
    return !found.post.empty() || !found.pre.empty();
}

std::uint64_t ObservationAccess::numLinks(Observable const& observable, bool isPre) {
    ObserverList const* const list = findList(observable, isPre);
    return list == nullptr || list->rep_ == nullptr ? 0 : list->rep_->numLinks();
}

std::uint64_t Observable::getNumPrePaths() const { return ObservationAccess::numLinks(*this, true); }

std::uint64_t Observable::getNumPostPaths() const { return ObservationAccess::numLinks(*this, false); }

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
    return params_ == nullptr ? npos : params_->lookupContent(path);
}

bool ObservationAccess::hasLastingLinks(Observable const& observable) {
    return std::ranges::any_of(listsOf(observable), [](ObserverList const* list) {
        if (list == nullptr || list->rep_ == nullptr)
            return false;
        return list->rep_->unknown != nullptr ||
               std::ranges::any_of(list->rep_->paths,
                                   [](ObserverPath const* path) { return !path->isTemporary(); });
    });
}

std::shared_ptr<Observer> ObservationAccess::follower(Observable const& observable) {
    ObserverList const* const list = findList(observable, false);
    if (list == nullptr || list->rep_ == nullptr || list->rep_->follower == nullptr)
        return nullptr;
    return *list->rep_->follower;
}

void ObservationAccess::keepFollower(Observable& observable, std::shared_ptr<Observer> follower) {
    listOf(observable, false).rep().follower =
        std::make_unique<std::shared_ptr<Observer>>(std::move(follower));
}

std::shared_ptr<Observer> ObservationAccess::takeFollower(Observable& observable) noexcept {
    ObserverList const* const list = findList(observable, false);
    if (list == nullptr || list->rep_ == nullptr || list->rep_->follower == nullptr)
        return nullptr;
    return std::move(*list->rep_->follower);
}

void Observable::resortPreObservers() {
    if (params_ != nullptr)
        params_->preList_.sort();
}

void Observable::resortPostObservers() {
    if (params_ != nullptr)
        params_->postList_.sort();
}

bool Observable::updateObserverLists(bool sortAlways) {
    if (params_ == nullptr)
        return true;
    std::shared_ptr<ObservingObject> const self = ObservationAccess::hold(*this);
    bool changed = false;
    bool const postResolved = updateList(params_->postList_, changed);
    bool const preResolved = updateList(params_->preList_, changed);
    if (changed || sortAlways) {
        params_->preList_.sort();
        params_->postList_.sort();
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
    if (params_ == nullptr)
        return 0;
    std::shared_ptr<ObservingObject> const self = ObservationAccess::hold(*this);
    return exchangeIn(params_->postList_, table) + exchangeIn(params_->preList_, table);
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
    auto const lists = ObservationAccess::listsOf(*this);
    std::vector<ObserverPath*> links; // all that need memory for is done before anybody is told
    if (params_ != nullptr)
        links.reserve(params_->preList_.size() + params_->postList_.size());
    // When an observer throws, the others are not told any more, but nothing stays here.
    struct Rest {
        Observable& observable;
        ReleasedPaths& released;
        ~Rest() {
            for (ObserverList* const list : ObservationAccess::listsOf(observable)) {
                if (list == nullptr || list->rep_ == nullptr)
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
    for (ObserverList* const list : lists) {
        if (list == nullptr || list->empty())
            continue;
        walks[list == lists.back()].emplace(*list);
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
