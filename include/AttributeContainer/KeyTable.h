// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Zorvan::DataStructures {

/// One pair of a key table.
struct KeyTableEntry {
    std::uint64_t token = 0;
    std::string name;
};

/// A two-way table of names and tokens. Each token has one name, the first that was given for it. Several
/// tokens may have the same name; the name then means the first of them. A table that is not changed may be
/// read from any thread.
class KX_ATTRIBUTECONTAINER_API KeyTable {
public:
    /// What a name that is not in the table means: all ones.
    static constexpr std::uint64_t noToken = ~std::uint64_t{0};

    KeyTable();
    /// Adds the entries in their order.
    explicit KeyTable(std::vector<KeyTableEntry> const& entries);
    KeyTable(KeyTable const&);
    KeyTable(KeyTable&&) noexcept;
    KeyTable& operator=(KeyTable const&);
    KeyTable& operator=(KeyTable&&) noexcept;
    ~KeyTable();

    /// The token that the name means, `noToken` when it is not in the table.
    [[nodiscard]] std::uint64_t getToken(std::string_view name) const noexcept;
    /// The name of a token, empty when it is not in the table.
    [[nodiscard]] std::optional<std::string> getName(std::uint64_t token) const;
    /// Like `getName` without a copy; null when the token is not in the table. The name lives until the token
    /// is removed or the table goes.
    [[nodiscard]] std::string const* findName(std::uint64_t token) const noexcept;
    /// The number of tokens.
    [[nodiscard]] std::size_t size() const noexcept { return names_.size(); }

    /// Adds a pair. False, and no change, when the token is in the table already. A name that is there
    /// already keeps its meaning.
    bool add(std::uint64_t token, std::string_view name);
    /// Takes a pair out. False, and no change, when the token does not have that name. When the name meant
    /// that token, it means the lowest of the other tokens that have it from now on.
    bool remove(std::uint64_t token, std::string_view name);

private:
    struct NameHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const noexcept;
    };
    struct NameEqual {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const noexcept { return a == b; }
    };
    template <class Value>
    using ByName = std::unordered_map<std::string, Value, NameHash, NameEqual>;

    ByName<std::uint64_t> tokens_;
    std::unordered_map<std::uint64_t, std::string> names_;
    /// The other tokens of names that several tokens have; no empty sets.
    ByName<std::set<std::uint64_t>> furtherTokens_;
};

} // namespace Zorvan::DataStructures
