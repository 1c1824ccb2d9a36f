// SPDX-License-Identifier: MIT
#include "allocation/FailingAllocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constinit std::atomic<std::ptrdiff_t> blocks{0};
constinit thread_local std::size_t next = 0; ///< How many allocations from now on one fails, 0 for none.
constinit thread_local bool followingFail = false, failed = false;

// A place for a breakpoint: who asks here is who has to cope.
[[gnu::noinline]] void failing() noexcept { failed = true; }

void* allocate(std::size_t size) noexcept {
    if (next != 0 && (next == 1 || --next == 0)) {
        if (!followingFail)
            next = 0;
        failing();
        return nullptr;
    }
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block)
        blocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void release(void* block) noexcept {
    if (block)
        blocks.fetch_sub(1, std::memory_order_relaxed);
    std::free(block);
}

} // namespace

// The forms for arrays call these; nothing of the library has an alignment of its own.
void* operator new(std::size_t size) {
    if (void* const block = allocate(size))
        return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, std::nothrow_t const&) noexcept { return allocate(size); }
void operator delete(void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }

namespace Zorvan::AttributeContainer::Testing {

FailingAllocations::FailingAllocations(std::size_t number, bool followingToo) noexcept {
    failed = false;
    followingFail = followingToo;
    next = number;
}

FailingAllocations::~FailingAllocations() { next = 0; }

bool FailingAllocations::haveFailed() noexcept { return failed; }

std::ptrdiff_t FailingAllocations::numBlocks() noexcept { return blocks.load(std::memory_order_relaxed); }

} // namespace Zorvan::AttributeContainer::Testing
