// SPDX-License-Identifier: MIT
#include <AttributeContainer/ChildList.h>

#include "containers/DeferredRelease.h"

#include <AttributeContainer/Object.h>

#include <bit>
#include <set>
#include <unordered_map>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr std::size_t maxSearchedSize = 16;

std::shared_ptr<Object> const& noChild() {
    static auto const& none = *new std::shared_ptr<Object>();
    return none;
}

std::string folded(std::string name) {
    for (char& c : name)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return name;
}

} // namespace

/// The children by folded name. Where several have one name, the first in the list counts; their order is
/// that of their slots, which compaction changes for all alike.
struct ChildList::NameIndex {
    struct BySlot {
        bool operator()(Object const* a, Object const* b) const { return a->childSlot_ < b->childSlot_; }
    };
    struct Bucket {
        Object* first = nullptr;
        std::unique_ptr<std::set<Object*, BySlot>> others;
    };

    void add(Object& child, std::string name) {
        auto const entry = nameOf.emplace(&child, name).first;
        try {
            insert(byName[std::move(name)], child);
        } catch (...) {
            nameOf.erase(entry);
            throw;
        }
    }

    void remove(Object& child) {
        auto const entry = nameOf.find(&child);
        if (entry == nameOf.end())
            return;
        auto const found = byName.find(entry->second);
        Bucket& bucket = found->second;
        if (bucket.first != &child)
            bucket.others->erase(&child);
        else if (bucket.others && !bucket.others->empty())
            bucket.first = bucket.others->extract(bucket.others->begin()).value();
        else
            byName.erase(found);
        nameOf.erase(entry);
    }

    static void insert(Bucket& bucket, Object& child) {
        if (!bucket.first) {
            bucket.first = &child;
            return;
        }
        if (!bucket.others)
            bucket.others = std::make_unique<std::set<Object*, BySlot>>();
        bool const isFirst = BySlot()(&child, bucket.first);
        bucket.others->insert(isFirst ? bucket.first : &child);
        if (isFirst)
            bucket.first = &child;
    }

    std::unordered_map<std::string, Bucket> byName;
    std::unordered_map<Object const*, std::string> nameOf;
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

ChildList::ChildList() = default;

ChildList::~ChildList() {
    names_.reset();
    for (auto& child : slots_)
        DeferredRelease::release(std::move(child));
}

std::uint64_t ChildList::getNumChildren() const { return slots_.size() - firstSlot_ - numEmpty_; }

void ChildList::compact() {
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

ChildList::Positions& ChildList::positions() const {
    if (!positions_)
        positions_ = std::make_unique<Positions>(slots_);
    return *positions_;
}

std::size_t ChildList::slotAt(std::uint64_t index) const {
    return numEmpty_ == 0 ? firstSlot_ + index : positions().slotOf(index);
}

std::shared_ptr<Object> const& ChildList::getChild(std::uint64_t index) const {
    return index < getNumChildren() ? slots_[slotAt(index)] : noChild();
}

std::shared_ptr<Object> const& ChildList::inqChild(std::string const& name) const {
    if (name.empty())
        return noChild();
    std::string const key = folded(name);
    if (!names_ && getNumChildren() <= maxSearchedSize) {
        for (std::size_t slot = firstSlot_; slot < slots_.size(); ++slot)
            if (slots_[slot] && folded(slots_[slot]->getName()) == key)
                return slots_[slot];
        return noChild();
    }
    if (!names_) {
        auto names = std::make_unique<NameIndex>();
        for (std::size_t slot = firstSlot_; slot < slots_.size(); ++slot)
            if (slots_[slot])
                names->add(*slots_[slot], folded(slots_[slot]->getName()));
        names_ = std::move(names);
    }
    auto const found = names_->byName.find(key);
    return found == names_->byName.end() ? noChild() : slots_[found->second.first->childSlot_];
}

std::optional<std::size_t> ChildList::findSlot(Object const& child) const {
    std::size_t const slot = child.childSlot_;
    if (slot >= firstSlot_ && slot < slots_.size() && slots_[slot].get() == &child)
        return slot;
    return std::nullopt;
}

std::optional<std::uint64_t> ChildList::lookupChild(Object const& child) const {
    auto const slot = findSlot(child);
    if (!slot)
        return std::nullopt;
    return numEmpty_ == 0 ? *slot - firstSlot_ : positions().before(*slot);
}

void ChildList::add(std::shared_ptr<Object> child) {
    Object& added = *child;
    slots_.push_back(std::move(child));
    added.childSlot_ = slots_.size() - 1;
    try {
        if (names_)
            names_->add(added, folded(added.getName()));
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

std::shared_ptr<Object> ChildList::takeOutSlot(std::size_t slot) {
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

std::shared_ptr<Object> ChildList::takeOut(std::uint64_t index) {
    return index < getNumChildren() ? takeOutSlot(slotAt(index)) : nullptr;
}

std::shared_ptr<Object> ChildList::takeOut(Object const& child) {
    auto const slot = findSlot(child);
    return slot ? takeOutSlot(*slot) : nullptr;
}

void ChildList::nameChanged(Object& child) noexcept {
    if (!names_ || !findSlot(child))
        return;
    try {
        std::string name = folded(child.getName());
        names_->remove(child);
        names_->add(child, std::move(name));
    } catch (...) {
        names_.reset(); // Without memory for the name; the next look-up makes the index anew.
    }
}

} // namespace Zorvan::AttributeContainer
