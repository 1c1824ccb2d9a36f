// SPDX-License-Identifier: MIT
#include "observation/ObserverListRep.h"

#include "observation/RegisteredAction.h"

#include <AttributeContainer/Observable.h>
#include <AttributeContainer/Observer.h>

#include <algorithm>
#include <functional>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

std::size_t hashOf(Observer const* observer) { return std::hash<Observer const*>()(observer); }

std::size_t hashOf(std::string const& text) { return std::hash<std::string>()(text); }

} // namespace

// Foreign code may go with a link, and work on lists that are whole again.
void ReleasedPaths::release() noexcept {
    while (ObserverPath* const path = first_) {
        first_ = path->previousOfObserver_;
        delete path;
    }
}

void ReleasedPaths::add(ObserverPath* path) noexcept {
    path->releaseReference();
    path->previousOfObserver_ = nullptr;
    (first_ == nullptr ? first_ : last_->previousOfObserver_) = path;
    last_ = path;
}

LinkKey::LinkKey(ObserverPath const& path, bool asksForPath)
    : heldAction(path.hasAction() ? path.action_ : nullptr), action(path.boundAction()),
      isReference(path.has(ObserverPath::BY_REFERENCE)), observer(path.observer_), owner(path.owner_) {
    if (!isReference || asksForPath)
        text = path.getPath();
}

LinkKey::LinkKey(ObserverPath const& path, Observer& named, bool asksForPath)
    : heldAction(path.hasAction() ? path.action_ : nullptr), action(path.boundAction()), isReference(true),
      observer(&named), owner(path.owner_) {
    if (asksForPath)
        text = named.inqObjPath();
}

LinkKey::LinkKey(ObserverPath const& path, std::string named)
    : heldAction(path.hasAction() ? path.action_ : nullptr), action(path.boundAction()), isReference(false),
      observer(nullptr), owner(path.owner_), text(std::move(named)) {}

bool LinkKey::equals(ObserverPath const& stored) const {
    if (stored.boundAction() != action)
        return false;
    if (isReference && stored.has(ObserverPath::BY_REFERENCE))
        return observer == stored.observer_;
    return text && stored.getPath() == text;
}

int ObserverList::Rep::compareKeys(bool liveA, short priorityA, ObserverPath const& b) {
    bool const liveB = b.has(ObserverPath::PLACED_LIVE);
    if (liveA != liveB)
        return liveA ? 1 : -1;
    return priorityA == b.priority_ ? 0 : priorityA < b.priority_ ? -1 : 1;
}

bool ObserverList::Rep::isBefore(ObserverPath const& a, ObserverPath const& b) {
    int const keys = compareKeys(a.has(ObserverPath::PLACED_LIVE), a.priority_, b);
    return keys < 0 || (keys == 0 && a.rank_ < b.rank_);
}

// Foreign code may go with the links: nothing leads here any more when they go.
ObserverList::Rep::~Rep() {
    for (ObserverWalk* walk = walks; walk != nullptr; walk = walk->outerOfList_) {
        walk->list_ = nullptr;
        walk->position_ = 0;
    }
    for (ObserverPath* const path : paths)
        path->list_ = nullptr;
    for (ObserverPath const* const path : paths)
        delete path;
}

std::size_t ObserverList::Rep::positionOf(ObserverPath const& path) const {
    // Links come and go at the end above all.
    if (!paths.empty() && paths.back() == &path)
        return paths.size() - 1;
    if (ordered) {
        auto const found = std::ranges::lower_bound(
            paths, &path, [](ObserverPath const* a, ObserverPath const* b) { return isBefore(*a, *b); });
        if (found != paths.end() && *found == &path)
            return static_cast<std::size_t>(found - paths.begin());
    }
    auto const found = std::ranges::find(paths, &path);
    return static_cast<std::size_t>(found - paths.begin());
}

std::uint64_t ObserverList::Rep::logicalIndex(std::size_t position) const {
    std::uint64_t dead = 0;
    if (numRemoved > 0)
        for (std::size_t i = 0; i < position; ++i)
            dead += paths[i]->has(ObserverPath::REMOVED) ? 1U : 0U;
    return position - dead;
}

std::size_t ObserverList::Rep::physicalIndex(std::uint64_t logical) const {
    if (numRemoved == 0)
        return logical < paths.size() ? static_cast<std::size_t>(logical) : paths.size();
    for (std::size_t i = 0; i < paths.size(); ++i)
        if (!paths[i]->has(ObserverPath::REMOVED) && logical-- == 0)
            return i;
    return paths.size();
}

// Where a new link goes: behind the last one that it is not lower than. Dead links keep their place in the
// order.
std::size_t ObserverList::Rep::sortedPosition(ObserverPath const& path) const {
    if (ordered && !paths.empty() && compareKeys(path.isLive(), path.priority_, *paths.back()) >= 0)
        return paths.size();
    if (ordered) {
        auto const found = std::ranges::partition_point(paths, [&](ObserverPath const* stored) {
            return compareKeys(path.isLive(), path.priority_, *stored) >= 0;
        });
        return static_cast<std::size_t>(found - paths.begin());
    }
    for (std::size_t i = paths.size(); i > 0; --i)
        if (!paths[i - 1]->has(ObserverPath::REMOVED) && ObserverPath::comp(path, *paths[i - 1]) >= 0)
            return i;
    return 0;
}

void ObserverList::Rep::place(ObserverPath& path, std::size_t position) {
    path.set(ObserverPath::PLACED_LIVE, path.isLive());
    path.set(ObserverPath::DISPLACED, false);
    path.rank_ = ++lastNumber;
    if (ordered)
        ordered = (position == 0 || isBefore(*paths[position - 1], path)) &&
                  (position + 1 >= paths.size() || isBefore(path, *paths[position + 1]));
}

ObserverPath* ObserverList::Rep::insertAt(std::size_t position, std::unique_ptr<ObserverPath> path,
                                          ObserverList& list) {
    ObserverPath& stored = *path;
    if (index == nullptr && paths.size() >= LINEAR_LIMIT)
        makeIndex();
    paths.insert(position, path.get());
    static_cast<void>(path.release());
    enterIndex(stored, {});
    for (ObserverWalk* walk = walks; walk != nullptr; walk = walk->outerOfList_)
        if (position <= walk->position_)
            ++walk->position_;
    stored.list_ = &list;
    stored.addition_ = static_cast<std::uint64_t>(++lastNumber);
    numActionless += stored.hasAction() ? 0U : 1U;
    place(stored, position);
    return &stored;
}

ObserverPath* ObserverList::Rep::insertSorted(std::unique_ptr<ObserverPath> path, ObserverList& list,
                                              ReleasedPaths& released) {
    if (walks == nullptr)
        settle(released);
    std::size_t const position = sortedPosition(*path);
    return insertAt(position, std::move(path), list);
}

std::unique_ptr<ObserverPath> ObserverList::Rep::takeAt(std::size_t position) noexcept {
    ObserverPath& path = *paths[position];
    if (path.has(ObserverPath::REMOVED))
        --numRemoved;
    else if (!path.hasAction())
        --numActionless;
    leaveIndex(path);
    if (path.has(ObserverPath::DISPLACED))
        --numDisplaced;
    if (displaced == &path)
        displaced = nullptr;
    path.set(ObserverPath::DISPLACED, false);
    path.list_ = nullptr;
    std::unique_ptr<ObserverPath> taken(&path);
    paths.erase(position);
    for (ObserverWalk* walk = walks; walk != nullptr; walk = walk->outerOfList_)
        if (position < walk->position_)
            --walk->position_;
    return taken;
}

void ObserverList::Rep::kill(ObserverPath& path) noexcept {
    if (path.has(ObserverPath::REMOVED))
        return;
    leaveIndex(path);
    if (path.has(ObserverPath::DISPLACED))
        --numDisplaced;
    if (displaced == &path)
        displaced = nullptr;
    if (!path.hasAction())
        --numActionless;
    ++numRemoved;
    path.releaseReference();
    path.set(ObserverPath::DISPLACED, false);
    path.set(ObserverPath::REMOVED, true);
    path.set(ObserverPath::BY_REFERENCE, false);
    path.text_.reset();
}

void ObserverList::Rep::killActionless() noexcept {
    if (numActionless == 0)
        return;
    for (ObserverPath* const path : paths) {
        if (path->has(ObserverPath::REMOVED) || path->hasAction())
            continue;
        path->detach();
        kill(*path);
    }
}

void ObserverList::Rep::purge(ReleasedPaths& released) noexcept {
    if (numRemoved == 0 || walks != nullptr)
        return;
    std::size_t kept = 0;
    for (ObserverPath* const path : paths) {
        if (path->has(ObserverPath::REMOVED)) {
            path->list_ = nullptr;
            released.add(path);
        } else {
            paths[kept++] = path;
        }
    }
    paths.truncate(kept);
    numRemoved = 0;
}

void ObserverList::Rep::settle(ReleasedPaths& released) noexcept {
    purge(released);
    if (!sortPending && ordered && numDisplaced == 1 && displaced != nullptr)
        moveDisplaced(*displaced);
    else if (sortPending || (ordered && numDisplaced > 0))
        sort();
}

// A stable sort does without memory when there is none.
void ObserverList::Rep::sort() noexcept {
    auto const isLess = [](ObserverPath const* a, ObserverPath const* b) {
        return ObserverPath::comp(*a, *b) < 0;
    };
    if (!std::ranges::is_sorted(paths, isLess))
        std::ranges::stable_sort(paths, isLess);
    for (ObserverPath* const path : paths) {
        path->set(ObserverPath::PLACED_LIVE, path->isLive());
        path->set(ObserverPath::DISPLACED, false);
        path->rank_ = ++lastNumber;
    }
    numDisplaced = 0;
    displaced = nullptr;
    ordered = true;
    sortPending = false;
}

// What a stable sort would do with the one link that is out of place: one that came to life stands above all
// that are not alive and so first among its equals, one that ended last among them.
void ObserverList::Rep::moveDisplaced(ObserverPath& path) {
    std::size_t const from = positionOf(path);
    bool const live = path.isLive();
    auto const isBelow = [&](ObserverPath const* stored) {
        int const keys = compareKeys(live, path.priority_, *stored);
        return live ? keys > 0 : keys >= 0;
    };
    auto const first = paths.begin();
    auto const here = first + static_cast<std::ptrdiff_t>(from);
    if (live) {
        auto const target = std::partition_point(here + 1, paths.end(), isBelow);
        std::rotate(here, here + 1, target);
        path.rank_ = target == paths.end() ? ++lastNumber : (*target)->rank_ - 1;
    } else {
        auto const target = std::partition_point(first, here, isBelow);
        std::rotate(target, here, here + 1);
        path.rank_ = ++lastNumber;
    }
    path.set(ObserverPath::PLACED_LIVE, live);
    path.set(ObserverPath::DISPLACED, false);
    numDisplaced = 0;
    displaced = nullptr;
}

std::optional<std::size_t> ObserverList::Rep::indexKey(ObserverPath const& path) {
    if (std::string const* const text = path.heldPath())
        return hashOf(*text);
    if (path.has(ObserverPath::BY_REFERENCE))
        return hashOf(path.observer_);
    return std::nullopt;
}

void ObserverList::Rep::makeIndex() {
    auto made = std::make_unique<Index>();
    for (ObserverPath* const path : paths)
        if (auto const key = indexKey(*path))
            made->emplace(*key, path);
    index = std::move(made);
}

ObserverList::Rep::Index::node_type ObserverList::Rep::leaveIndex(ObserverPath& path) noexcept {
    if (path.heldPath() != nullptr)
        --numText;
    auto const key = indexKey(path);
    if (index == nullptr || !key)
        return {};
    auto const [begin, end] = index->equal_range(*key);
    auto const it = std::find_if(begin, end, [&](auto const& entry) { return entry.second == &path; });
    return it == end ? Index::node_type() : index->extract(it);
}

void ObserverList::Rep::enterIndex(ObserverPath& path, Index::node_type node) noexcept {
    if (path.heldPath() != nullptr)
        ++numText;
    auto const key = indexKey(path);
    if (index == nullptr || !key)
        return;
    try {
        if (node.empty()) {
            index->emplace(*key, &path);
        } else {
            node.key() = *key;
            index->insert(std::move(node));
        }
    } catch (...) {
        index.reset();
    }
}

void ObserverList::Rep::stateChanged(ObserverPath& path) {
    bool const isDisplaced = path.isLive() != path.has(ObserverPath::PLACED_LIVE);
    if (isDisplaced == path.has(ObserverPath::DISPLACED) || path.has(ObserverPath::REMOVED))
        return;
    path.set(ObserverPath::DISPLACED, isDisplaced);
    numDisplaced = isDisplaced ? numDisplaced + 1 : numDisplaced - 1;
    displaced = isDisplaced ? &path : nullptr;
}

void ObserverList::Rep::priorityChanged() {
    sortPending = sortPending || ordered;
    ordered = false;
}

template <class F>
void ObserverList::Rep::forEachCandidate(std::size_t hash, F&& function) const {
    auto const [begin, end] = index->equal_range(hash);
    for (auto it = begin; it != end; ++it)
        function(*it->second);
}

void ObserverList::Rep::collectIndexed(LinkKey const& key, Observer const* observer,
                                       std::vector<ObserverPath*>& found) const {
    if (key.isReference || observer != nullptr)
        forEachCandidate(hashOf(observer), [&](ObserverPath& other) {
            if (other.has(ObserverPath::BY_REFERENCE) && other.observer_ == observer &&
                other.boundAction() == key.action)
                found.push_back(&other);
        });
    if (key.text)
        forEachCandidate(hashOf(*key.text), [&](ObserverPath& other) {
            if (other.heldPath() != nullptr && key.equals(other))
                found.push_back(&other);
        });
}

void ObserverList::Rep::collectEqual(LinkKey const& key, std::vector<ObserverPath*>& found) const {
    if (numLinks() == 0)
        return;
    ObserverList& list = *paths.front()->list_;
    ObserverWalk walk(list); // keeps what is removed meanwhile
    Observer const* observer = key.observer;
    // Asking each of many observers for its path costs too much. What the text names is the only one whose
    // path it can be, as far as paths mean what they say.
    if (index != nullptr && !key.isReference && key.text && numLinks() > numText) {
        std::shared_ptr<Observer> const resolved = ObserverPath::resolve(key.owner, *key.text);
        if (resolved != nullptr && resolved->inqObjPath() == key.text)
            observer = resolved.get();
    }
    if (walk.isOver(list) && index != nullptr) {
        collectIndexed(key, observer, found);
    } else {
        while (ObserverPath* const stored = walk.next())
            if (key.equals(*stored))
                found.push_back(stored);
    }
    if (walk.isOver(list))
        std::erase_if(found, [](ObserverPath const* path) { return path->has(ObserverPath::REMOVED); });
    else
        found.clear();
}

ObserverPath* ObserverList::Rep::findEqual(LinkKey const& key, ObserverPath const* except) const {
    std::vector<ObserverPath*> found;
    collectEqual(key, found);
    std::erase(found, except);
    return found.empty() ? nullptr : lastOf(found);
}

ObserverPath* ObserverList::Rep::lastOf(std::vector<ObserverPath*> const& links) const {
    if (links.size() == 1)
        return links.front();
    return *std::ranges::max_element(links, {}, [this](ObserverPath const* one) { return positionOf(*one); });
}

ObserverPath* ObserverList::Rep::anyOf(Observer const& observer) const noexcept {
    if (index != nullptr) {
        auto const [begin, end] = index->equal_range(hashOf(&observer));
        auto const found =
            std::find_if(begin, end, [&](auto const& entry) { return entry.second->observer_ == &observer; });
        return found == end ? nullptr : found->second;
    }
    for (std::size_t i = paths.size(); i > 0; --i)
        if (paths[i - 1]->observer_ == &observer)
            return paths[i - 1];
    return nullptr;
}

void ObserverList::Rep::collectOf(Observer const& observer, std::vector<ObserverPath*>& found) const {
    if (index != nullptr) {
        forEachCandidate(hashOf(&observer), [&](ObserverPath& other) {
            if (other.observer_ == &observer)
                found.push_back(&other);
        });
        return;
    }
    for (std::size_t i = paths.size(); i > 0; --i)
        if (paths[i - 1]->observer_ == &observer)
            found.push_back(paths[i - 1]);
}

} // namespace Zorvan::AttributeContainer
