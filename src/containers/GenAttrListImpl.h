// SPDX-License-Identifier: MIT
#pragma once

// The bodies of GenAttrList<T>, for the file that instantiates them.

#include "foundation/NeverDestroyed.h"

#include <AttributeContainer/AttrList.h>

#include <algorithm>
#include <set>
#include <unordered_map>
#include <utility>

namespace Zorvan::AttributeContainer {

/// Up to this size a search is cheaper than an index.
inline constexpr std::uint64_t maxSearchedSize = 16;

/// Where each element is. One that is in several slots is found in the lowest of them.
template <class T>
struct GenAttrList<T>::Index {
    void add(T const* element, std::uint64_t slot) {
        auto const [entry, isNew] = lowest.emplace(element, slot);
        if (isNew)
            return;
        further[element].insert(std::max(entry->second, slot));
        entry->second = std::min(entry->second, slot);
    }

    void remove(T const* element, std::uint64_t slot) noexcept {
        auto const entry = lowest.find(element);
        auto const others = further.find(element);
        if (others == further.end()) {
            lowest.erase(entry);
            return;
        }
        if (entry->second != slot)
            others->second.erase(slot);
        else
            entry->second = others->second.extract(others->second.begin()).value();
        if (others->second.empty())
            further.erase(others);
    }

    std::unordered_map<T const*, std::uint64_t> lowest;
    std::unordered_map<T const*, std::set<std::uint64_t>> further; ///< No empty sets.
};

template <class T>
GenAttrList<T>::GenAttrList(std::uint64_t firstToken) : firstToken_(firstToken) {}

template <class T>
GenAttrList<T>::~GenAttrList() = default;

template <class T>
std::uint64_t GenAttrList<T>::findIndex(T const* element) const {
    if (!element)
        return DataStructures::KeyTable::noToken;
    if (elements_.size() <= maxSearchedSize) {
        for (std::uint64_t i = 0; i < elements_.size(); ++i)
            if (elements_[i].get() == element)
                return i;
        return DataStructures::KeyTable::noToken;
    }
    if (!index_) {
        auto index = std::make_unique<Index>();
        index->lowest.reserve(elements_.size());
        for (std::uint64_t i = 0; i < elements_.size(); ++i)
            if (elements_[i])
                index->add(elements_[i].get(), i);
        index_ = std::move(index);
    }
    auto const found = index_->lowest.find(element);
    return found == index_->lowest.end() ? DataStructures::KeyTable::noToken : found->second;
}

// Without memory for the index there is none until the next look-up.
template <class T>
void GenAttrList<T>::indexAdded(T const* element, std::uint64_t index) noexcept {
    if (!index_ || !element)
        return;
    try {
        index_->add(element, index);
    } catch (...) {
        index_.reset();
    }
}

template <class T>
void GenAttrList<T>::indexRemoved(T const* element, std::uint64_t index) noexcept {
    if (index_ && element)
        index_->remove(element, index);
}

template <class T>
std::uint64_t GenAttrList<T>::getToken(T const& element) const {
    auto const index = findIndex(&element);
    return index == DataStructures::KeyTable::noToken ? index : firstToken_ + index;
}

template <class T>
bool GenAttrList<T>::setMinCapacity(std::uint64_t) {
    return false;
}

template <class T>
std::uint64_t GenAttrList<T>::getMinCapacity() const {
    return 0;
}

template <class T>
bool GenAttrList<T>::contains(std::uint64_t token) const {
    return token >= firstToken_ && token - firstToken_ < elements_.size();
}

template <class T>
std::shared_ptr<T> const& GenAttrList<T>::getElement(std::uint64_t token) const {
    static constinit NeverDestroyed<std::shared_ptr<T>> none{std::in_place};
    return contains(token) ? elements_[token - firstToken_] : none.get();
}

template <class T>
void GenAttrList<T>::append(std::shared_ptr<T> element) {
    elements_.push_back(std::move(element));
    indexAdded(elements_.back().get(), elements_.size() - 1);
}

template <class T>
std::shared_ptr<T> GenAttrList<T>::exchange(std::uint64_t index, std::shared_ptr<T> element) {
    indexRemoved(elements_[index].get(), index);
    std::swap(elements_[index], element);
    indexAdded(elements_[index].get(), index);
    return element;
}

template <class T>
void GenAttrList<T>::grow(std::uint64_t slots) {
    if (elements_.size() < slots)
        elements_.resize(slots);
}

template <class T>
void GenAttrList<T>::moveLastTo(std::uint64_t index) {
    std::uint64_t const last = elements_.size() - 1;
    auto moved = exchange(last, nullptr);
    elements_.pop_back();
    if (index != last)
        exchange(index, std::move(moved));
}

template <class T>
std::weak_ptr<T> GenAttrList<T>::addElement(std::shared_ptr<T>& element, std::string const&) {
    append(element);
    return element;
}

template <class T>
bool GenAttrList<T>::setElement(std::uint64_t token, std::shared_ptr<T>& element, std::string const&) {
    if (!contains(token))
        return false;
    auto const incoming = element; // May be a reference to the slot.
    if (!rmElement(token, false) || !contains(token))
        return false;
    auto const released = exchange(token - firstToken_, incoming);
    return true;
}

template <class T>
bool GenAttrList<T>::rmElement(std::uint64_t token, bool compact) {
    if (!contains(token))
        return false;
    std::uint64_t const index = token - firstToken_;
    auto const released = exchange(index, nullptr);
    if (index >= getMinCapacity() && compact) {
        elements_.erase(elements_.begin() + static_cast<std::ptrdiff_t>(index));
        index_.reset();
    }
    return true;
}

template <class T>
bool GenAttrList<T>::rmElement(std::shared_ptr<T const>& element, bool compact) {
    if (!element)
        return false;
    auto const index = findIndex(element.get());
    return index != DataStructures::KeyTable::noToken && rmElement(firstToken_ + index, compact);
}

} // namespace Zorvan::AttributeContainer
