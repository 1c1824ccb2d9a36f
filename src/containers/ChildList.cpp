// SPDX-License-Identifier: MIT
#include <AttributeContainer/ChildList.h>

#include "containers/DeferredRelease.h"

#include <AttributeContainer/Object.h>

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

ChildList::ChildList() = default;

ChildList::~ChildList() {
    names_.reset();
    for (auto& child : slots_)
        DeferredRelease::release(std::move(child));
}

std::uint64_t ChildList::getNumChildren() const { return slots_.size() - firstSlot_ - numEmpty_; }

void ChildList::compact() const {
    if (numEmpty_ == 0)
        return;
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
}

std::shared_ptr<Object> const& ChildList::getChild(std::uint64_t index) const {
    if (index >= getNumChildren())
        return noChild();
    compact();
    return slots_[firstSlot_ + index];
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
    if (!findSlot(child))
        return std::nullopt;
    compact();
    return child.childSlot_ - firstSlot_;
}

void ChildList::add(std::shared_ptr<Object> child) {
    Object& added = *child;
    slots_.push_back(std::move(child));
    added.childSlot_ = slots_.size() - 1;
    if (!names_)
        return;
    try {
        names_->add(added, folded(added.getName()));
    } catch (...) {
        slots_.pop_back();
        throw;
    }
}

std::shared_ptr<Object> ChildList::takeOutSlot(std::size_t slot) {
    if (names_)
        names_->remove(*slots_[slot]);
    auto child = std::move(slots_[slot]);
    slots_[slot] = nullptr;
    ++numEmpty_;
    while (firstSlot_ < slots_.size() && !slots_[firstSlot_]) {
        ++firstSlot_;
        --numEmpty_;
    }
    while (slots_.size() > firstSlot_ && !slots_.back()) {
        slots_.pop_back();
        --numEmpty_;
    }
    if (numEmpty_ > maxSearchedSize && numEmpty_ > slots_.size() / 2)
        compact();
    return child;
}

std::shared_ptr<Object> ChildList::takeOut(std::uint64_t index) {
    if (index >= getNumChildren())
        return nullptr;
    compact();
    return takeOutSlot(firstSlot_ + index);
}

std::shared_ptr<Object> ChildList::takeOut(Object const& child) {
    auto const slot = findSlot(child);
    return slot ? takeOutSlot(*slot) : nullptr;
}

void ChildList::nameChanged(Object& child) {
    if (!names_ || !findSlot(child))
        return;
    std::string name = folded(child.getName());
    names_->remove(child);
    names_->add(child, std::move(name));
}

} // namespace Zorvan::AttributeContainer
