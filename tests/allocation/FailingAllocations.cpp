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

void* allocate(std::size_t size, std::size_t alignment) noexcept {
    if (next != 0 && (next == 1 || --next == 0)) {
        if (!followingFail)
            next = 0;
        failing();
        return nullptr;
    }
    void* const block = alignment == 0
                            ? std::malloc(size == 0 ? 1 : size)
                            : std::aligned_alloc(alignment, (size + alignment) / alignment * alignment);
    if (block)
        blocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void* allocateOrThrow(std::size_t size, std::size_t alignment) {
    if (void* const block = allocate(size, alignment))
        return block;
    throw std::bad_alloc();
}

void release(void* block) noexcept {
    if (block)
        blocks.fetch_sub(1, std::memory_order_relaxed);
    std::free(block);
}

std::size_t number(std::align_val_t alignment) { return static_cast<std::size_t>(alignment); }

} // namespace

void* operator new(std::size_t size) { return allocateOrThrow(size, 0); }
void* operator new(std::size_t size, std::nothrow_t const&) noexcept { return allocate(size, 0); }
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocateOrThrow(size, number(alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, std::nothrow_t const&) noexcept {
    return allocate(size, number(alignment));
}
// The forms for arrays and those with sizes call these.
void operator delete(void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete(void* block, std::align_val_t) noexcept { release(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { release(block); }

namespace Zorvan::AttributeContainer::Testing {

FailingAllocations::FailingAllocations(std::size_t number, Mode mode) noexcept {
    failed = false;
    followingFail = mode == Mode::FromThenOn;
    next = number;
}

FailingAllocations::~FailingAllocations() { next = 0; }

bool FailingAllocations::haveFailed() noexcept { return failed; }

std::ptrdiff_t FailingAllocations::numBlocks() noexcept { return blocks.load(std::memory_order_relaxed); }

} // namespace Zorvan::AttributeContainer::Testing
