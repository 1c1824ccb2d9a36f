// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/KeyTable.h>

#include <cstdint>
#include <string_view>

namespace Zorvan::DataStructures {

/// The look-up of a name in steps, for whoever looks many names up in a table that no cache holds: each step
/// reads what the one before has asked the memory for, and a number of names take each step together. Between
/// the steps the table may change. Names are told apart by their hashes only.
class KeyTableGuess {
public:
    explicit KeyTableGuess(KeyTable const& table) : table_(table) {}

    static std::uint32_t hashOf(std::string_view name) noexcept;
    void fetchSlot(std::uint32_t hash) const noexcept;
    void fetchEntry(std::uint32_t hash) const noexcept;
    /// The token of a name with that hash, `noToken` when there is none. Fetches what leads back to the name.
    std::uint64_t token(std::uint32_t hash) const noexcept;

private:
    std::uint32_t entryOf(std::uint32_t hash) const noexcept;

    KeyTable const& table_;
};

} // namespace Zorvan::DataStructures
