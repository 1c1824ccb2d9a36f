// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace Zorvan::AttributeContainer::Testing {

/// The program's allocations, counted and made to fail: its operators new and delete, which serve the library
/// too, go through here. Only allocations of the thread that has opened a scope fail.
class FailingAllocations {
public:
    /// From here on the `number`th allocation of the thread fails, and with `followingToo` all that follow
    /// it; none for 0.
    FailingAllocations(std::size_t number, bool followingToo) noexcept;
    FailingAllocations(FailingAllocations const&) = delete;
    FailingAllocations& operator=(FailingAllocations const&) = delete;
    ~FailingAllocations();

    /// Whether the scope that was opened last made an allocation fail.
    static bool haveFailed() noexcept;
    /// The blocks that are allocated at present.
    static std::ptrdiff_t numBlocks() noexcept;
};

} // namespace Zorvan::AttributeContainer::Testing
