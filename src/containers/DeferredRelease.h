// SPDX-License-Identifier: MIT
#pragma once

#include "foundation/PerThread.h"

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

class AttrContainer;

/// Lets go of containers from the destructors of those that hold them, in a loop instead of by recursion: a
/// tree may be deeper than the stack.
class DeferredRelease {
public:
    /// Releases a member of a container that is being destroyed.
    static void release(std::shared_ptr<AttrContainer> container) noexcept {
        if (!container || container.use_count() > 1)
            return;
        try {
            auto& queue = PerThread<Queue>::get();
            if (queue.isRunning)
                queue.waiting.push_back(std::move(container));
            else
                run(queue, std::move(container));
            if (++queue.numReleased % portion == 0)
                mergeFreed();
        } catch (...) {
            // Without memory for the queue the container goes here, deeper on the stack.
        }
    }

private:
    struct Queue {
        std::vector<std::shared_ptr<AttrContainer>> waiting;
        bool isRunning = false;
        std::size_t numReleased = 0;
    };

    static constexpr std::size_t portion = 128;
    static constexpr std::size_t largeBlock = 4096; ///< In bytes, for an allocator.

    /// Allocators keep freed small blocks as they are until they have to find a large one, and merge all of
    /// them then. Behind a wide tree that is when none of them is in a cache any more, which takes longer
    /// than all else that its end needs. Asking for a large block now and then has them merge a few at a
    /// time.
    static void mergeFreed() { ::operator delete(::operator new(largeBlock)); }

    static void run(Queue& queue, std::shared_ptr<AttrContainer> container) noexcept {
        queue.isRunning = true;
        container.reset();
        while (!queue.waiting.empty()) {
            auto next = std::move(queue.waiting.back());
            queue.waiting.pop_back();
            next.reset();
        }
        queue.isRunning = false;
        queue.waiting = {};
    }
};

} // namespace Zorvan::AttributeContainer
