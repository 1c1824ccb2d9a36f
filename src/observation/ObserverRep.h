// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Observer.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace Zorvan::AttributeContainer {

/// What an observer knows of the links that name it: the entries for active ones, in the order in which they
/// became active, and every link that holds it by reference, active or not.
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
    std::vector<ObserverPath*> paths;

    std::size_t numEntries() const { return entries.size() - numGaps; }
    /// Makes room for one more link, so that adding it cannot fail.
    void reservePath() {
        if (paths.size() == paths.capacity())
            paths.reserve(2 * paths.size() + 1);
    }
    void add(std::weak_ptr<Observable> observable, Observable const& address);
    /// Last entry of an observable, NONE when there is none. Entries of an object that had the same address
    /// before do not count.
    std::uint32_t find(Observable const& observable) const;
    void remove(std::uint32_t position) noexcept;
    void closeGaps() noexcept;
    /// What is watched, each once, as met from the first entry on or from the last one back.
    std::vector<std::shared_ptr<Observable>> distinctObservables(bool fromLast) const;

private:
    void makeIndex() noexcept;
};

} // namespace Zorvan::AttributeContainer
