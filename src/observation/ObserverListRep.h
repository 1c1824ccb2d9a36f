// SPDX-License-Identifier: MIT
#pragma once

#include "observation/NotifyingThread.h"
#include "observation/PathVector.h"
#include "observation/UnknownLinks.h"

#include <AttributeContainer/ObserverList.h>
#include <AttributeContainer/ObserverPath.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

/// Links that were taken out of a list. They are released last, when nobody needs list and observable any
/// more: what goes with them may be foreign (the group of an application's actions), and destroy both.
class ReleasedPaths {
public:
    ReleasedPaths() = default;
    ReleasedPaths(ReleasedPaths const&) = delete;
    ReleasedPaths& operator=(ReleasedPaths const&) = delete;
    ~ReleasedPaths() {
        if (first_ != nullptr)
            release();
    }

    /// Takes a link over that is in no list any more. Its observer forgets it here already: the links form a
    /// chain by what they have to be in that of their observer, since letting go must not need memory.
    void add(ObserverPath* path) noexcept;

private:
    void release() noexcept;

    ObserverPath* first_ = nullptr;
    ObserverPath* last_ = nullptr;
};

/// What a link is compared by. It is taken from a link before a search, which then needs that link no more:
/// comparing may ask foreign observers for their paths.
struct LinkKey {
    /// With `asksForPath`, an observer that is held by reference is asked for its path; without it, only
    /// references are found equal to a reference.
    LinkKey(ObserverPath const& path, bool asksForPath);
    /// The key that a link would have if it named an observer by reference.
    LinkKey(ObserverPath const& path, Observer& named, bool asksForPath);
    /// The key that it would have if it named one by a path.
    LinkKey(ObserverPath const& path, std::string named);

    /// What is foreign comes last in it.
    bool equals(ObserverPath const& stored) const;

    std::shared_ptr<RegisteredAction> heldAction;
    Action const* action;
    bool isReference;
    Observer const* observer;
    ObservingObject* owner;
    std::optional<std::string> text;
};

/// The content of an ObserverList.
///
/// Each link remembers the key (liveness, priority) and the rank by which its place was chosen, so that its
/// place is found by binary search also after its liveness has changed. Such a link is "displaced" until the
/// list settles: nobody who goes through the links by index sees the list move under him. A list to which
/// somebody appended out of order is not "ordered": it is searched linearly, and only a sort on request
/// changes its order.
struct ObserverList::Rep {
    /// Up to this length a list is searched linearly; above it an index finds links by observer or path text.
    static constexpr std::size_t LINEAR_LIMIT = 16;

    using Index = std::unordered_multimap<std::size_t, ObserverPath*>;

    Rep() = default;
    Rep(Rep const&) = delete;
    Rep& operator=(Rep const&) = delete;
    ~Rep();

    PathVector paths;                ///< owned by the list
    std::uint32_t numRemoved = 0;    ///< dead links that wait
    std::uint32_t numActionless = 0; ///< links without action that are not dead
    std::uint32_t numText = 0;       ///< links by path string
    std::uint32_t numDisplaced : 30 = 0;
    std::uint32_t ordered : 1 = 1;
    std::uint32_t sortPending : 1 = 0;
    ObserverPath* displaced = nullptr; ///< the last link that was displaced, if it is still here
    ObserverWalk* walks = nullptr;     ///< the innermost walk that runs over the list
    std::int64_t lastNumber = 0;       ///< that an addition or a place was given
    std::unique_ptr<Index> index;
    std::unique_ptr<UnknownLinks> unknown; ///< null when there are none
    /// The observer by which the owner of the list follows others; null when there is none. Only a list of
    /// post-observers keeps one.
    std::unique_ptr<std::shared_ptr<Observer>> follower;

    /// Position of a link of this list.
    std::size_t positionOf(ObserverPath const& path) const;
    /// Position among the links that are not dead.
    std::uint64_t logicalIndex(std::size_t position) const;
    /// The reverse; the size of the list for an index past the end.
    std::size_t physicalIndex(std::uint64_t logical) const;
    std::size_t numLinks() const { return paths.size() - numRemoved; }

    ObserverPath* insertAt(std::size_t position, std::unique_ptr<ObserverPath> path, ObserverList& list);
    ObserverPath* insertSorted(std::unique_ptr<ObserverPath> path, ObserverList& list,
                               ReleasedPaths& released);
    std::unique_ptr<ObserverPath> takeAt(std::size_t position) noexcept;
    /// Makes a link dead where it stands; what its observer knows of it is the caller's business. Runs no
    /// foreign code: the action goes with the link.
    void kill(ObserverPath& path) noexcept;
    /// Makes the links without action dead, and informs their observers.
    void killActionless() noexcept;
    /// Takes the dead links out; not while a walk runs.
    void purge(ReleasedPaths& released) noexcept;
    /// Brings the list in order after walks and changes of state; not while a walk runs.
    void settle(ReleasedPaths& released) noexcept;
    bool isSettled() const noexcept {
        return numRemoved == 0 && !sortPending && (!ordered || numDisplaced == 0);
    }
    /// Whether the end of the last walk has nothing to do here; false may be a false alarm.
    bool isQuiet() const noexcept { return (numRemoved | numActionless | numDisplaced) == 0 && !sortPending; }
    void sort() noexcept;

    /// Around every change of what a link is found by. What leaving returns is handed back to entering, which
    /// then allocates nothing; should it have to and fail, the list does without index.
    Index::node_type leaveIndex(ObserverPath& path) noexcept;
    void enterIndex(ObserverPath& path, Index::node_type node) noexcept;
    /// After a change of liveness.
    void stateChanged(ObserverPath& path);
    /// After a change of priority.
    void priorityChanged();

    /// Last link that equals the given one and is not `except`, or null. Asks foreign observers for their
    /// paths, and so does collectEqual: the list may be gone afterwards, unless the caller keeps it. Links
    /// that went meanwhile are not found.
    ObserverPath* findEqual(LinkKey const& key, ObserverPath const* except) const;
    void collectEqual(LinkKey const& key, std::vector<ObserverPath*>& found) const;
    /// The link that stands last in the list, of some that are not none.
    ObserverPath* lastOf(std::vector<ObserverPath*> const& links) const;
    void collectOf(Observer const& observer, std::vector<ObserverPath*>& found) const;
    /// Any link that names an observer by reference, null when there is none.
    ObserverPath* anyOf(Observer const& observer) const noexcept;

private:
    static std::optional<std::size_t> indexKey(ObserverPath const& path);
    void makeIndex();
    static bool isBefore(ObserverPath const& a, ObserverPath const& b);
    static int compareKeys(bool liveA, short priorityA, ObserverPath const& b);
    std::size_t sortedPosition(ObserverPath const& path) const;
    void place(ObserverPath& path, std::size_t position);
    void moveDisplaced(ObserverPath& path);
    template <class F>
    void forEachCandidate(std::size_t hash, F&& function) const;
    void collectIndexed(LinkKey const& key, Observer const* observer,
                        std::vector<ObserverPath*>& found) const;
};

/// A walk over a list from its end, on the stack of whoever walks. Links may be added and removed meanwhile,
/// and the list may go: positions are kept right, dead links stay in memory until the walk has ended.
class ObserverWalk {
public:
    explicit ObserverWalk(ObserverList& list);
    /// The walk is known as running notification of the observable on the calling thread, and learns of its
    /// end. There are links in the list.
    ObserverWalk(ObserverList& list, Observable& observable, NotifyingThread& thread)
        : list_(&list), observable_(&observable), thread_(&thread),
          outerOfList_(std::exchange(list.rep_->walks, this)),
          outerNotification_(std::exchange(thread.innermostNotification, this)),
          position_(list.rep_->paths.size()) {}
    ObserverWalk(ObserverWalk const&) = delete;
    ObserverWalk& operator=(ObserverWalk const&) = delete;
    ~ObserverWalk() {
        if (list_ != nullptr)
            list_->rep_->walks = outerOfList_;
        if (thread_ != nullptr)
            thread_->innermostNotification = outerNotification_;
    }

    /// The next link further down that is not dead; null at the front, and when the list is gone.
    ObserverPath* next() {
        ObserverPath* path = nullptr;
        do
            path = nextPlaced();
        while (path != nullptr && path->has(ObserverPath::REMOVED));
        return path;
    }
    /// The same with the dead ones.
    ObserverPath* nextPlaced() { return position_ == 0 ? nullptr : list_->rep_->paths[--position_]; }
    /// Null when the observable is gone.
    Observable* observable() const { return observable_; }
    bool isOver(ObserverList const& list) const { return list_ == &list; }
    bool hasLostList() const { return list_ == nullptr; }
    /// Whether a notification of an observable goes over a list.
    static bool isNotifying(Observable const& observable, ObserverList const& list);
    /// The observable ends.
    static void forget(Observable const& observable) noexcept;

private:
    friend class Observable;
    friend struct ObserverList::Rep;

    void leaveList() noexcept;

    ObserverList* list_; ///< null when the list is gone, or does not matter any more
    Observable* observable_;
    NotifyingThread* thread_; ///< the calling thread's; null for a walk that is no notification
    ObserverWalk* outerOfList_;
    ObserverWalk* outerNotification_ = nullptr; ///< of any observable, on the same thread
    /// Of the link that was handed out last, or one past the end; 0 without a list.
    std::size_t position_;
};

/// Keeps a listed link in memory while foreign code runs that may remove it: observers are asked for their
/// paths, and paths are resolved. Must be the last thing of an operation to go.
class ObserverPath::Hold {
public:
    explicit Hold(ObserverPath const& path) {
        if (path.list_ == nullptr)
            return;
        if (path.owner_ != nullptr)
            owner_ = path.owner_->weak_from_this().lock();
        walk_.emplace(*path.list_);
    }

private:
    std::shared_ptr<ObservingObject> owner_;
    std::optional<ObserverWalk> walk_; // goes before the owner
};

} // namespace Zorvan::AttributeContainer
