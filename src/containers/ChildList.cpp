// SPDX-License-Identifier: MIT
#include <AttributeContainer/ChildList.h>

#include "attributes/AttributeAccess.h"
#include "attributes/AttributeSwitches.h"
#include "containers/DeferredRelease.h"
#include "foundation/NeverDestroyed.h"

#include <AttributeContainer/Object.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::size_t maxSearchedSize = 16;

std::shared_ptr<Object> const& noChild() {
    static constinit NeverDestroyed<std::shared_ptr<Object>> none{std::in_place};
    return none.get();
}

char folded(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string folded(std::string name) {
    for (char& c : name)
        c = folded(c);
    return name;
}

/// The name without regard to one that is staged for it: others do not see that one, and nobody is told when
/// it is dropped.
std::string lastingName(Object& child) {
    return isCachedAttributePendingHere() ? AttributeAccess::holder(child.Attr_name()).read()
                                          : child.getName();
}

bool isNamed(Object& child, std::string const& foldedName) {
    std::string const name = child.getName();
    return std::equal(name.begin(), name.end(), foldedName.begin(), foldedName.end(),
                      [](char c, char f) { return folded(c) == f; });
}

} // namespace

/// The children by the hash of their folded names, which each child remembers. Those of one hash stand in the
/// order of their slots, which compaction changes for all alike; nearly always they have one name.
class ChildList::NameIndex {
public:
    NameIndex() : places_(minPlaces) {}

    void add(Object& child, std::string const& name) {
        if (4 * (numHashes_ + 1) > 3 * places_.size())
            grow();
        std::uint32_t const hash = hashOf(name);
        Place& place = places_[find(hash)];
        if (!place.first) {
            place = {hash, false, &child};
            ++numHashes_;
        } else {
            Object* later = &child;
            bool const isFirst = BySlot()(later, place.first);
            further_[hash].insert(isFirst ? place.first : later);
            place.hasFurther = true;
            if (isFirst)
                place.first = later;
        }
        child.nameHash_ = hash;
    }

    void remove(Object& child) noexcept {
        std::size_t const index = find(child.nameHash_);
        Place& place = places_[index];
        if (!place.hasFurther) {
            if (place.first == &child)
                erase(index);
            return;
        }
        auto const further = further_.find(place.hash);
        if (place.first == &child)
            place.first = further->second.extract(further->second.begin()).value();
        else
            further->second.erase(&child);
        if (further->second.empty()) {
            further_.erase(further);
            place.hasFurther = false;
        }
    }

    /// The first child of a folded name, null when there is none.
    Object* lookup(std::string const& name) const {
        Place const& place = places_[find(hashOf(name))];
        if (!place.first || isNamed(*place.first, name))
            return place.first;
        if (place.hasFurther)
            for (Object* const child : further_.find(place.hash)->second)
                if (isNamed(*child, name))
                    return child;
        return nullptr;
    }

private:
    struct BySlot {
        bool operator()(Object const* a, Object const* b) const { return a->childSlot_ < b->childSlot_; }
    };
    struct Place {
        std::uint32_t hash = 0;
        bool hasFurther = false;
        Object* first = nullptr; ///< Null in a free place.
    };

    static constexpr std::size_t minPlaces = 32;

    static std::uint32_t hashOf(std::string const& name) {
        std::uint64_t const hash = std::hash<std::string>()(name);
        return static_cast<std::uint32_t>(hash ^ hash >> 32);
    }

    /// The place of a hash, or the free one that it would take: the first one from that of the hash on.
    std::size_t find(std::uint32_t hash) const noexcept {
        std::size_t const mask = places_.size() - 1;
        std::size_t place = hash & mask;
        while (places_[place].first && places_[place].hash != hash)
            place = (place + 1) & mask;
        return place;
    }

    void grow() {
        std::vector<Place> smaller(2 * places_.size());
        smaller.swap(places_);
        for (Place const& place : smaller)
            if (place.first)
                places_[find(place.hash)] = place;
    }

    /// Frees a place and moves those that follow it up, so that none is behind a free place.
    void erase(std::size_t place) noexcept {
        std::size_t const mask = places_.size() - 1;
        for (std::size_t next = (place + 1) & mask; places_[next].first; next = (next + 1) & mask)
            if (((next - places_[next].hash) & mask) >= ((next - place) & mask)) {
                places_[place] = places_[next];
                place = next;
            }
        places_[place] = Place();
        --numHashes_;
    }

    std::vector<Place> places_; ///< A power of two of them, at most three quarters taken.
    std::size_t numHashes_ = 0;
    std::unordered_map<std::uint32_t, std::set<Object*, BySlot>> further_; ///< No empty sets.
};

/// How many children stand before a slot, and which slot has so many before it, in logarithmic time: node i
/// of the tree counts the children in the (i & -i) slots that end with slot i - 1.
class ChildList::Positions {
public:
    explicit Positions(std::vector<std::shared_ptr<Object>> const& slots) {
        counts_.reserve(slots.size());
        for (auto const& slot : slots)
            append(slot ? 1 : 0);
    }

    void append(std::size_t count) {
        std::size_t const node = counts_.size() + 1;
        for (std::size_t below = node - 1; below > (node & (node - 1)); below &= below - 1)
            count += counts_[below - 1];
        counts_.push_back(count);
    }

    void remove(std::size_t slot) {
        for (std::size_t node = slot + 1; node <= counts_.size(); node += node & (~node + 1))
            --counts_[node - 1];
    }

    void dropLast() { counts_.pop_back(); }

    std::size_t before(std::size_t slot) const {
        std::size_t count = 0;
        for (std::size_t node = slot; node != 0; node &= node - 1)
            count += counts_[node - 1];
        return count;
    }

    std::size_t slotOf(std::size_t position) const {
        std::size_t slot = 0;
        for (std::size_t step = std::bit_floor(counts_.size()); step != 0; step >>= 1)
            if (slot + step <= counts_.size() && counts_[slot + step - 1] <= position) {
                slot += step;
                position -= counts_[slot - 1];
            }
        return slot;
    }

private:
    std::vector<std::size_t> counts_;
};

/// The children of an object that has, or had, some.
class ChildList::Slots {
public:
    Slots() = default;
    ~Slots();
    Slots(Slots const&) = delete;
    Slots& operator=(Slots const&) = delete;

    std::uint64_t getNumChildren() const;
    std::shared_ptr<Object> const& getChild(std::uint64_t index) const;
    std::shared_ptr<Object> const& inqChild(std::string const& name) const;
    std::optional<std::uint64_t> lookupChild(Object const& child) const;
    void add(std::shared_ptr<Object> child);
    std::shared_ptr<Object> takeOut(std::uint64_t index);
    std::shared_ptr<Object> takeOut(Object const& child);
    void nameChanged(Object& child) noexcept;

private:
    void compact();
    std::shared_ptr<Object> takeOutSlot(std::size_t slot);
    std::optional<std::size_t> findSlot(Object const& child) const;
    std::size_t slotAt(std::uint64_t index) const;
    Positions& positions() const;

    /// Removal empties a slot; when most slots are empty the list is compacted, so that removing children one
    /// after the other stays linear.
    std::vector<std::shared_ptr<Object>> slots_;
    std::size_t firstSlot_ = 0; ///< Those before it are empty.
    std::size_t numEmpty_ = 0;  ///< Empty slots from firstSlot_ on.
    /// Made when a position is asked for in a list with gaps, gone with the next compaction.
    mutable std::unique_ptr<Positions> positions_;
    mutable std::unique_ptr<NameIndex> names_;
};

ChildList::Slots::~Slots() {
    names_.reset();
    for (auto& child : slots_)
        DeferredRelease::release(std::move(child));
}

std::uint64_t ChildList::Slots::getNumChildren() const { return slots_.size() - firstSlot_ - numEmpty_; }

void ChildList::Slots::compact() {
    std::size_t next = 0;
    for (std::size_t slot = firstSlot_; slot < slots_.size(); ++slot)
        if (slots_[slot]) {
            slots_[slot]->childSlot_ = next;
            if (next != slot)
                slots_[next] = std::move(slots_[slot]);
            ++next;
        }
    slots_.resize(next);
    firstSlot_ = 0;
    numEmpty_ = 0;
    positions_.reset();
}

ChildList::Positions& ChildList::Slots::positions() const {
    if (!positions_)
        positions_ = std::make_unique<Positions>(slots_);
    return *positions_;
}

std::size_t ChildList::Slots::slotAt(std::uint64_t index) const {
    return numEmpty_ == 0 ? firstSlot_ + index : positions().slotOf(index);
}

std::shared_ptr<Object> const& ChildList::Slots::getChild(std::uint64_t index) const {
    return index < getNumChildren() ? slots_[slotAt(index)] : noChild();
}

std::shared_ptr<Object> const& ChildList::Slots::inqChild(std::string const& name) const {
    if (name.empty())
        return noChild();
    std::string const key = folded(name);
    // The index does not know staged names.
    if ((!names_ && getNumChildren() <= maxSearchedSize) || isCachedAttributePendingHere()) {
        for (std::size_t slot = firstSlot_; slot < slots_.size(); ++slot)
            if (slots_[slot] && isNamed(*slots_[slot], key))
                return slots_[slot];
        return noChild();
    }
    if (!names_) {
        auto names = std::make_unique<NameIndex>();
        for (std::size_t slot = firstSlot_; slot < slots_.size(); ++slot)
            if (slots_[slot])
                names->add(*slots_[slot], folded(lastingName(*slots_[slot])));
        names_ = std::move(names);
    }
    auto const* const found = names_->lookup(key);
    return found ? slots_[found->childSlot_] : noChild();
}

std::optional<std::size_t> ChildList::Slots::findSlot(Object const& child) const {
    std::size_t const slot = child.childSlot_;
    if (slot >= firstSlot_ && slot < slots_.size() && slots_[slot].get() == &child)
        return slot;
    return std::nullopt;
}

std::optional<std::uint64_t> ChildList::Slots::lookupChild(Object const& child) const {
    auto const slot = findSlot(child);
    if (!slot)
        return std::nullopt;
    return numEmpty_ == 0 ? *slot - firstSlot_ : positions().before(*slot);
}

void ChildList::Slots::add(std::shared_ptr<Object> child) {
    Object& added = *child;
    slots_.push_back(std::move(child));
    added.childSlot_ = slots_.size() - 1;
    try {
        if (names_)
            names_->add(added, folded(lastingName(added)));
        if (positions_)
            positions_->append(1);
    } catch (...) {
        // What was not noted completely is made anew by the next look-up.
        names_.reset();
        positions_.reset();
        slots_.pop_back();
        throw;
    }
}

std::shared_ptr<Object> ChildList::Slots::takeOutSlot(std::size_t slot) {
    if (names_)
        names_->remove(*slots_[slot]);
    if (positions_)
        positions_->remove(slot);
    auto child = std::exchange(slots_[slot], nullptr);
    ++numEmpty_;
    while (firstSlot_ < slots_.size() && !slots_[firstSlot_]) {
        ++firstSlot_;
        --numEmpty_;
    }
    while (slots_.size() > firstSlot_ && !slots_.back()) {
        slots_.pop_back();
        if (positions_)
            positions_->dropLast();
        --numEmpty_;
    }
    std::size_t const numUnused = firstSlot_ + numEmpty_;
    if (numUnused > maxSearchedSize && numUnused > slots_.size() / 2)
        compact();
    return child;
}

std::shared_ptr<Object> ChildList::Slots::takeOut(std::uint64_t index) {
    return index < getNumChildren() ? takeOutSlot(slotAt(index)) : nullptr;
}

std::shared_ptr<Object> ChildList::Slots::takeOut(Object const& child) {
    auto const slot = findSlot(child);
    return slot ? takeOutSlot(*slot) : nullptr;
}

void ChildList::Slots::nameChanged(Object& child) noexcept {
    if (!names_ || !findSlot(child))
        return;
    try {
        std::string const name = folded(lastingName(child));
        names_->remove(child);
        names_->add(child, name);
    } catch (...) {
        names_.reset(); // Without memory for the name; the next look-up makes the index anew.
    }
}

// --- The list, with or without children

ChildList::ChildList() = default;

ChildList::~ChildList() = default;

std::uint64_t ChildList::getNumChildren() const { return slots_ ? slots_->getNumChildren() : 0; }

std::shared_ptr<Object> const& ChildList::getChild(std::uint64_t index) const {
    return slots_ ? slots_->getChild(index) : noChild();
}

std::shared_ptr<Object> const& ChildList::inqChild(std::string const& name) const {
    return slots_ ? slots_->inqChild(name) : noChild();
}

std::optional<std::uint64_t> ChildList::lookupChild(Object const& child) const {
    return slots_ ? slots_->lookupChild(child) : std::nullopt;
}

void ChildList::add(std::shared_ptr<Object> child) {
    if (!slots_)
        slots_ = std::make_unique<Slots>();
    slots_->add(std::move(child));
}

std::shared_ptr<Object> ChildList::takeOut(std::uint64_t index) {
    return slots_ ? slots_->takeOut(index) : nullptr;
}

std::shared_ptr<Object> ChildList::takeOut(Object const& child) {
    return slots_ ? slots_->takeOut(child) : nullptr;
}

void ChildList::nameChanged(Object& child) noexcept {
    if (slots_)
        slots_->nameChanged(child);
}

} // namespace Zorvan::AttributeContainer
