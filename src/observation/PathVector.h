// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Zorvan::AttributeContainer {

class ObserverPath;

/// A vector of plain pointers that moves the shorter side on insertion and removal, so that taking the links
/// of a long list out in the order in which they came does not move all the others each time. A std::deque
/// would do that too, but takes half a KiB from the first element on, and the usual list has one: that one is
/// kept in place. Owns nothing.
class PathVector {
public:
    using iterator = ObserverPath**;
    using const_iterator = ObserverPath* const*;

    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): of the union one is
    PathVector() noexcept : one_(nullptr), first_(&one_) {}
    PathVector(PathVector const&) = delete;
    PathVector& operator=(PathVector const&) = delete;
    ~PathVector() {
        if (!isInPlace())
            delete[] many_;
    }

    std::size_t size() const noexcept { return size_; }
    ObserverPath* operator[](std::size_t position) const noexcept { return begin()[position]; }
    ObserverPath*& operator[](std::size_t position) noexcept { return begin()[position]; }
    bool empty() const noexcept { return size_ == 0; }
    ObserverPath* front() const noexcept { return *begin(); }
    ObserverPath* back() const noexcept { return end()[-1]; }
    iterator begin() noexcept { return first_; }
    iterator end() noexcept { return begin() + size_; }
    const_iterator begin() const noexcept { return first_; }
    const_iterator end() const noexcept { return begin() + size_; }

    void insert(std::size_t position, ObserverPath* path) {
        bool const atFront = isNearFront(position);
        if (atFront ? gap() == 0 : gap() + size_ == capacity_)
            makeRoom(atFront ? size_ / 2 : 0);
        if (atFront) {
            --first_;
            std::move(begin() + 1, begin() + 1 + position, begin());
        } else {
            std::move_backward(begin() + position, end(), end() + 1);
        }
        begin()[position] = path;
        ++size_;
    }

    void erase(std::size_t position) noexcept {
        auto* const place = begin() + position;
        if (isNearFront(position)) {
            std::move_backward(begin(), place, place + 1);
            ++first_;
        } else {
            std::move(place + 1, end(), place);
        }
        --size_;
    }

    /// Drops everything from a position on.
    void truncate(std::size_t length) noexcept { size_ = static_cast<std::uint32_t>(length); }

private:
    /// Up to this size it is not worth while to choose a side.
    static constexpr std::size_t SHORT = 64;

    bool isInPlace() const noexcept { return capacity_ == 1; }
    /// The unused places at the front.
    std::size_t gap() const noexcept { return isInPlace() ? 0 : static_cast<std::size_t>(first_ - many_); }
    bool isNearFront(std::size_t position) const noexcept { return position * 2 < size_ && size_ >= SHORT; }

    // A long unused part at the front is used up first: links that come at the end and go at the front would
    // let it grow for ever.
    void makeRoom(std::uint32_t newGap) {
        if (newGap == 0 && gap() > size_) {
            std::move(begin(), end(), many_);
            first_ = many_;
            return;
        }
        std::uint32_t const capacity = newGap + std::max<std::uint32_t>(4, 2 * size_);
        auto* const made = new ObserverPath*[capacity];
        std::copy(begin(), end(), made + newGap);
        if (!isInPlace())
            delete[] many_;
        many_ = made;
        first_ = made + newGap;
        capacity_ = capacity;
    }

    union {
        ObserverPath* one_;
        ObserverPath** many_;
    };
    ObserverPath** first_; ///< where the first link is
    std::uint32_t capacity_ = 1;
    std::uint32_t size_ = 0;
};

} // namespace Zorvan::AttributeContainer
