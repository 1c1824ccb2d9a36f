// SPDX-License-Identifier: MIT
#pragma once

// The bodies of GenAttrList<T>, for the file that instantiates them.

#include <AttributeContainer/AttrList.h>

#include <algorithm>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {
/// Up to this size a search is cheaper than an index.
constexpr std::uint64_t maxSearchedSize = 16;
} // namespace

template <class T>
GenAttrList<T>::GenAttrList(std::uint64_t firstToken) : firstToken_(firstToken) {}

template <class T>
GenAttrList<T>::~GenAttrList() = default;

template <class T>
std::uint64_t GenAttrList<T>::findIndex(T const* element) const {
    if (elements_.size() <= maxSearchedSize) {
        for (std::uint64_t i = 0; i < elements_.size(); ++i)
            if (elements_[i].get() == element)
                return i;
        return DataStructures::KeyTable::noToken;
    }
    if (!indexByElement_) {
        auto index = std::make_unique<std::unordered_map<T const*, std::uint64_t>>();
        index->reserve(elements_.size());
        bool hasDuplicates = false;
        for (std::uint64_t i = 0; i < elements_.size(); ++i)
            if (elements_[i] && !index->emplace(elements_[i].get(), i).second)
                hasDuplicates = true;
        indexByElement_ = std::move(index);
        hasDuplicates_ = hasDuplicates;
    }
    auto const found = indexByElement_->find(element);
    return found == indexByElement_->end() ? DataStructures::KeyTable::noToken : found->second;
}

template <class T>
void GenAttrList<T>::indexAdded(T const* element, std::uint64_t index) {
    if (!indexByElement_ || !element)
        return;
    auto const [entry, isNew] = indexByElement_->emplace(element, index);
    if (!isNew) {
        hasDuplicates_ = true;
        entry->second = std::min(entry->second, index);
    }
}

template <class T>
void GenAttrList<T>::indexRemoved(T const* element, std::uint64_t index) {
    if (!indexByElement_ || !element)
        return;
    if (hasDuplicates_) {
        indexByElement_.reset(); // Another slot may hold the element: the next look-up counts anew.
        return;
    }
    auto const found = indexByElement_->find(element);
    if (found != indexByElement_->end() && found->second == index)
        indexByElement_->erase(found);
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
    static std::shared_ptr<T> const& none = *new std::shared_ptr<T>();
    return contains(token) ? elements_[token - firstToken_] : none;
}

template <class T>
void GenAttrList<T>::append(std::shared_ptr<T> element) {
    elements_.push_back(std::move(element));
    try {
        indexAdded(elements_.back().get(), elements_.size() - 1);
    } catch (...) {
        elements_.pop_back();
        throw;
    }
}

template <class T>
std::shared_ptr<T> GenAttrList<T>::exchange(std::uint64_t index, std::shared_ptr<T> element) {
    indexRemoved(elements_[index].get(), index);
    std::swap(elements_[index], element);
    try {
        indexAdded(elements_[index].get(), index);
    } catch (...) {
        indexByElement_.reset();
    }
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
    if (index != last) {
        auto moved = exchange(last, nullptr);
        exchange(index, std::move(moved));
    }
    elements_.pop_back();
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
        indexByElement_.reset();
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
