// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zorvan::DataStructures {

/// One pair of a key table.
struct KeyTableEntry {
    std::uint64_t token = 0;
    std::string name;
};

/// A two-way table of names and tokens. Each token has one name, the first that
/// was given for it. Several tokens may have the same name; the name then means
/// the first of them. A table that is not changed may be read from any thread.
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
    /// Like `getName` without a copy; null when the token is not in the table.
    /// The name lives until the token is removed or the table goes.
    [[nodiscard]] std::string const* findName(std::uint64_t token) const noexcept;
    /// The number of tokens.
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    /// Whether several tokens have one name.
    [[nodiscard]] bool hasRepeatedNames() const noexcept { return !isSmall() && size_ != numNames_; }

    /// How many consecutive tokens have the same names in two tables, from a first one in each on.
    [[nodiscard]] static std::uint64_t numSameNames(KeyTable const& a, std::uint64_t firstOfA,
                                                    KeyTable const& b, std::uint64_t firstOfB) noexcept;

    /// Adds a pair. False, and no change, when the token is in the table already.
    /// A name that is there already keeps its meaning.
    bool add(std::uint64_t token, std::string_view name);
    /// Takes a pair out. False, and no change, when the token does not have that
    /// name. When the name meant that token, it means the lowest of the other
    /// tokens that have it from now on.
    bool remove(std::uint64_t token, std::string_view name);
    /// Gives the name of a token to a lower one that has none, as taking the pair
    /// out and adding the other one would do, but without need of memory. False,
    /// and no change, when the token has no name.
    bool moveDown(std::uint64_t from, std::uint64_t to) noexcept;

private:
    friend class KeyTableGuess;

    /// A token and its name. Free ones form a chain; its links stand in `token`.
    struct Entry {
        std::string name;
        std::uint64_t token = 0;
    };
    /// A place of the hash table of names. What a name means is the token of its
    /// entry.
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t entry = noEntry;
    };
    struct Rare;
    static constexpr std::uint32_t noEntry = ~std::uint32_t{0};

    bool isSmall() const noexcept { return slots_.empty(); }
    template <class Condition>
    std::pair<Entry const*, std::uint32_t> searchSmall(Condition const& condition) const noexcept;
    std::string const* guessName(std::uint64_t token, std::uint64_t index) const noexcept;
    void addSmall(std::uint64_t token, std::string_view name);
    void makePlaces();
    Rare& rare();
    Entry& entryAt(std::uint32_t index) noexcept;
    Entry const& entryAt(std::uint32_t index) const noexcept;
    std::uint32_t findEntry(std::uint64_t token) const noexcept;
    std::uint32_t reserveEntry();
    void setEntry(std::uint64_t token, std::uint32_t index);
    void clearEntry(std::uint64_t token) noexcept;
    std::size_t findSlot(std::string_view name, std::uint32_t hash) const noexcept;
    bool removeFurther(std::uint64_t token, std::string_view name, std::size_t place) noexcept;
    void reserveSlot();
    void eraseSlot(std::size_t place) noexcept;
    void swap(KeyTable& other) noexcept;

    /// Up to this number of entries with different names the table is searched,
    /// and has nothing but the entries.
    static constexpr std::uint32_t maxSmall = 8;

    /// Each chunk but the first is as long as all before it, so that entries stay
    /// where they are.
    std::vector<std::vector<Entry>> chunks_;
    std::uint32_t numUsed_ = 0; ///< entries in use, or free and in the chain; in
                                ///< a small table a bit for each
    std::uint32_t firstFree_ = noEntry;
    std::size_t size_ = 0;
    /// Entries by token. Tokens are mostly consecutive; the place of others is in
    /// `rare_`.
    std::vector<std::uint32_t> dense_;
    /// Entries by name: a power of two of places, at most three quarters taken,
    /// each name at the first free place from that of its hash on.
    std::vector<Slot> slots_;
    std::size_t numNames_ = 0;
    std::unique_ptr<Rare> rare_; ///< made when it is needed
};

} // namespace Zorvan::DataStructures
