// SPDX-License-Identifier: MIT
#include "bounds/Usage.h"

#include <algorithm>
#include <atomic>
#include <ctime>
#include <malloc.h>
#include <new>

namespace {

constinit std::atomic<std::size_t> inUse{0}, most{0};

void* allocate(std::size_t size) noexcept {
    void* const block = std::malloc(std::max<std::size_t>(size, 1));
    std::size_t const added = block ? malloc_usable_size(block) : 0;
    std::size_t const used = inUse.fetch_add(added, std::memory_order_relaxed) + added;
    most.store(std::max(most.load(std::memory_order_relaxed), used), std::memory_order_relaxed);
    return block;
}

void* allocateOrThrow(std::size_t size) {
    if (void* const block = allocate(size))
        return block;
    throw std::bad_alloc();
}

void release(void* block) noexcept {
    if (block)
        inUse.fetch_sub(malloc_usable_size(block), std::memory_order_relaxed);
    std::free(block);
}

} // namespace

// Sanitizers bring these along in all their forms, so all but those with an alignment are replaced.
void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void* operator new(std::size_t size, std::nothrow_t const&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept { return allocate(size); }
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t) noexcept { release(block); }

namespace Zorvan::AttributeContainer::Testing {

double Usage::processorTime() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

std::size_t Usage::startPeak() {
    most = inUse.load();
    return most;
}

std::size_t Usage::peakBytes() { return most; }

} // namespace Zorvan::AttributeContainer::Testing
