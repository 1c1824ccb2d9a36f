// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Observer.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace Zorvan::AttributeContainer {

/// The entries of an observer for the active links that name it, in the order in which they became active, of
/// an observer that has had more than one.
struct Observer::Params::Rep {
    /// Up to this number entries are searched linearly and taken out at once; above it an index finds the
    /// last entry of an observable, and entries that go leave a gap until many have gone.
    static constexpr std::size_t LINEAR_LIMIT = 16;
    static constexpr std::uint32_t NONE = ~std::uint32_t{0};

    struct Entry {
        std::weak_ptr<Observable> observable;
        Observable const* address; ///< null for a gap
        std::uint32_t previous; ///< the entry before this one with the same address; kept only with an index
    };

    std::vector<Entry> entries;
    std::unique_ptr<std::unordered_map<Observable const*, std::uint32_t>> last;
    std::size_t numGaps = 0;

    std::size_t numEntries() const { return entries.size() - numGaps; }
    void add(std::weak_ptr<Observable> observable, Observable const& address);
    /// Last entry of an observable, NONE when there is none. Entries of an object that had the same address
    /// before do not count.
    std::uint32_t find(Observable const& observable) const;
    void remove(std::uint32_t position) noexcept;
    void closeGaps() noexcept;

private:
    void makeIndex() noexcept;
};

} // namespace Zorvan::AttributeContainer
