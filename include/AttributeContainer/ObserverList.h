// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <cstdint>
#include <memory>

namespace Zorvan::AttributeContainer {

class ObservationAccess;
class Observable;
class ObserverPath;

/// The ordered links of one observable, of one kind. It owns its links; the list is ascending, so the last
/// one is told first.
///
/// While a walk runs over the list, a removed link is only disabled: it is dead at once, and goes when the
/// walk has ended. The list keeps its content behind one pointer, which is null until the first link comes.
class KX_ATTRIBUTECONTAINER_API ObserverList {
public:
    ObserverList() noexcept;
    ObserverList(ObserverList const&) = delete;
    ObserverList& operator=(ObserverList const&) = delete;
    ~ObserverList();

    /// Number of links, disabled ones that wait for the end of a walk included.
    std::uint64_t size() const;
    /// Whether there is none.
    bool empty() const { return rep_ == nullptr || size() == 0; }
    /// A link. Throws std::out_of_range ("invalid vector subscript") for an index past the end.
    ObserverPath& at(std::uint64_t index) const;

    /// Appends; returns the stored link, null for none.
    ObserverPath* add(std::unique_ptr<ObserverPath> path);
    /// Inserts behind an index; appends when that is at or past the last one. All ones inserts at the front.
    ObserverPath* addAfter(std::uint64_t index, std::unique_ptr<ObserverPath> path);
    /// Without deferral takes the link out and returns it. With one (the notification depth of the owner)
    /// disables it and returns null. Throws std::out_of_range ("invalid vector subscript") for an index past
    /// the end.
    std::unique_ptr<ObserverPath> remove(std::uint64_t index, std::uint64_t deferral);
    /// Removes the last link that equals the given one; false when there is none.
    bool removeElement(ObserverPath const& path, std::uint64_t deferral);
    /// Drops every link without action. The flag is ignored.
    void compress(bool all);
    /// The highest index of a link that equals the given one; all ones when there is none. In a long list a
    /// path string is resolved to find the references that it may equal, instead of asking each observer for
    /// its path.
    std::uint64_t lookup(ObserverPath const& path) const;
    /// The same.
    std::uint64_t lookupContent(ObserverPath& path) const;
    /// Sorts ascending by ObserverPath::comp; equal ones keep their order. Waits for the end of a running
    /// walk.
    void sort();

private:
    friend class ObservationAccess;
    friend class Observable;
    friend class ObserverPath;
    friend class Observer;
    friend class ObserverWalk;
    struct Rep;

    Rep& rep();
    std::unique_ptr<Rep> rep_;
};

} // namespace Zorvan::AttributeContainer
