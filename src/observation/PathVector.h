// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Zorvan::AttributeContainer {

class ObserverPath;

/// A vector of plain pointers that moves the shorter side on insertion and removal, so that taking the links
/// of a long list out in the order in which they came does not move all the others each time. A std::deque
/// would do that too, but takes half a KiB from the first element on, and the usual list has one. Owns
/// nothing.
class PathVector {
public:
    using iterator = std::vector<ObserverPath*>::iterator;
    using const_iterator = std::vector<ObserverPath*>::const_iterator;

    std::size_t size() const noexcept { return store_.size() - gap_; }
    ObserverPath* operator[](std::size_t position) const noexcept { return store_[gap_ + position]; }
    ObserverPath*& operator[](std::size_t position) noexcept { return store_[gap_ + position]; }
    ObserverPath* front() const noexcept { return store_[gap_]; }
    iterator begin() noexcept { return store_.begin() + static_cast<std::ptrdiff_t>(gap_); }
    iterator end() noexcept { return store_.end(); }
    const_iterator begin() const noexcept { return store_.begin() + static_cast<std::ptrdiff_t>(gap_); }
    const_iterator end() const noexcept { return store_.end(); }

    void insert(std::size_t position, ObserverPath* path) {
        auto const offset = static_cast<std::ptrdiff_t>(position);
        if (gap_ > size())
            closeGap();
        if (position * 2 >= size() || size() < SHORT) {
            store_.insert(begin() + offset, path);
            return;
        }
        if (gap_ == 0) {
            std::size_t const gap = size() / 2;
            store_.insert(store_.begin(), gap, nullptr);
            gap_ = gap;
        }
        --gap_;
        std::move(begin() + 1, begin() + 1 + offset, begin());
        *(begin() + offset) = path;
    }

    void erase(std::size_t position) noexcept {
        auto const place = begin() + static_cast<std::ptrdiff_t>(position);
        if (position * 2 >= size() || size() < SHORT) {
            store_.erase(place);
            return;
        }
        std::move_backward(begin(), place, place + 1);
        ++gap_;
    }

    /// Drops everything from a position on.
    void truncate(std::size_t length) noexcept { store_.resize(gap_ + length); }

private:
    /// Up to this size it is not worth while to choose a side.
    static constexpr std::size_t SHORT = 64;

    // Or links that come at the end and go at the front would let the unused part grow for ever.
    void closeGap() noexcept {
        store_.erase(store_.begin(), begin());
        gap_ = 0;
    }

    std::vector<ObserverPath*> store_;
    std::size_t gap_ = 0; ///< unused places at the front
};

} // namespace Zorvan::AttributeContainer
