// SPDX-License-Identifier: MIT
#pragma once

#include "foundation/PerThread.h"

#include <array>
#include <cstddef>
#include <new>
#include <utility>

namespace Zorvan::AttributeContainer {

/// The memory that a thread let go of last, one block of each size class.
struct SpareMemory {
    static constexpr std::size_t CLASS_SIZE = 32, NUM_CLASSES = 8;

    SpareMemory() = default;
    SpareMemory(SpareMemory const&) = delete;
    SpareMemory& operator=(SpareMemory const&) = delete;
    ~SpareMemory() {
        for (void* const block : blocks)
            ::operator delete(block);
    }

    std::array<void*, NUM_CLASSES> blocks{};
};

/// For std::allocate_shared: an object that comes and goes with every change would cost more than the change.
/// The memory of the last one that went on a thread waits there for the next one of about the same size.
template <class T>
class RecyclingAllocator {
    static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

    static constexpr std::size_t sizeClass = (sizeof(T) - 1) / SpareMemory::CLASS_SIZE;
    static constexpr bool isKept = sizeClass < SpareMemory::NUM_CLASSES;

public:
    using value_type = T;

    RecyclingAllocator() = default;
    template <class U>
    explicit RecyclingAllocator(RecyclingAllocator<U> const&) noexcept {}

    [[nodiscard]] T* allocate(std::size_t count) {
        std::size_t size = count * sizeof(T);
        if constexpr (isKept) {
            // The place for it is made here, because releasing must not fail.
            SpareMemory& spares = PerThread<SpareMemory>::get();
            if (count == 1) {
                if (spares.blocks[sizeClass] != nullptr)
                    return static_cast<T*>(std::exchange(spares.blocks[sizeClass], nullptr));
                size = (sizeClass + 1) * SpareMemory::CLASS_SIZE;
            }
        }
        return static_cast<T*>(::operator new(size));
    }

    void deallocate(T* memory, std::size_t count) noexcept {
        if constexpr (isKept) {
            SpareMemory* const spares = PerThread<SpareMemory>::peek();
            if (count == 1 && spares != nullptr && spares->blocks[sizeClass] == nullptr) {
                spares->blocks[sizeClass] = memory;
                return;
            }
        }
        ::operator delete(memory);
    }

    template <class U>
    bool operator==(RecyclingAllocator<U> const&) const noexcept {
        return true;
    }
};

} // namespace Zorvan::AttributeContainer
