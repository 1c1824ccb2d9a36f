// SPDX-License-Identifier: MIT
#pragma once

#include "observation/NotifyingThread.h"

#include <atomic>

namespace Zorvan::AttributeContainer {

/// The bits of a thread's switches of attributes, NotifyingThread::attributeSwitches.
enum AttributeSwitch : int { CachedAttributePending = 1, ObservingBlocked = 2 };

/// How many threads have a cached attribute pending, or ended with one. As long as there are none, whoever
/// reads a value need not look for the switches of his thread, which takes longer than the reading.
inline constinit std::atomic<int> numThreadsWithCachedAttribute = 0;

/// Whether the calling thread has a cached attribute pending.
inline bool isCachedAttributePendingHere() noexcept {
    return numThreadsWithCachedAttribute.load(std::memory_order_relaxed) != 0 &&
           (notifyingThread.attributeSwitches & CachedAttributePending) != 0;
}

/// Sets the switches of the calling thread.
inline void setAttributeSwitches(int switches) noexcept {
    int& current = notifyingThread.attributeSwitches;
    static_assert(CachedAttributePending == 1);
    int const change = (switches & CachedAttributePending) - (current & CachedAttributePending);
    if (change != 0)
        numThreadsWithCachedAttribute.fetch_add(change, std::memory_order_relaxed);
    current = switches;
}

} // namespace Zorvan::AttributeContainer
