// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Registry.h"
#include "platform/RegistryNames.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

struct RegistryNameOrder {
    using is_transparent = void;
    bool operator()(Utf16View a, Utf16View b) const noexcept { return compareRegistryNames(a, b) < 0; }
};

/// What a key holds, in the order of the names. Names come and go in logarithmic time; who asks for one index
/// after the other is answered in constant time, because the place that was asked for last is remembered.
template <class Name, class Item>
class RegistryItems {
public:
    using Map = std::map<Name, Item, RegistryNameOrder>;

    RegistryItems() = default;
    RegistryItems(RegistryItems const&) = delete;
    RegistryItems& operator=(RegistryItems const&) = delete;

    Map const& map() const { return map_; }
    /// By its index, which is below the size.
    typename Map::value_type const& at(std::size_t index) const {
        std::size_t const fromEnd = map_.size() - index;
        std::size_t const steps =
            index_ == nowhere ? map_.size() : std::max(index, index_) - std::min(index, index_);
        if (std::min(index, fromEnd) < steps) {
            place_ = index < fromEnd ? map_.begin() : map_.end();
            index_ = index < fromEnd ? 0 : map_.size();
        }
        std::advance(place_, static_cast<std::ptrdiff_t>(index) - static_cast<std::ptrdiff_t>(index_));
        index_ = index;
        return *place_;
    }
    /// For a change, which makes the remembered place void.
    Map& change() {
        index_ = nowhere;
        return map_;
    }

private:
    static constexpr std::size_t nowhere = ~std::size_t{0};

    Map map_;
    mutable typename Map::const_iterator place_;
    mutable std::size_t index_ = nowhere;
};

struct RegistryValue {
    DWORD type = 0;
    std::vector<BYTE> data;
};

/// A key of the registry in memory, with its values and subkeys.
class RegistryKey {
public:
    /// By the names that the keys themselves hold.
    using Keys = RegistryItems<Utf16View, std::shared_ptr<RegistryKey>>;
    using Values = RegistryItems<Utf16String, RegistryValue>;

    static constexpr std::size_t maxNameLength = 255;
    static constexpr std::size_t maxValueNameLength = 16383;
    /// Keys below one another; recursion over a tree of keys is limited by it.
    static constexpr int maxDepth = 512;

    RegistryKey() = default;
    RegistryKey(RegistryKey const&) = delete;
    RegistryKey& operator=(RegistryKey const&) = delete;

    Utf16String const& name() const { return name_; }
    Keys const& keys() const { return keys_; }
    Values const& values() const { return values_; }
    /// Null for roots and for deleted keys.
    RegistryKey* parent() const { return parent_; }
    bool isDeleted() const { return isDeleted_; }

    std::shared_ptr<RegistryKey> find(Utf16View name) const;
    /// The subkey of that name, made when it is missing; empty when the name cannot be one, or would be too
    /// deep.
    std::shared_ptr<RegistryKey> findOrAdd(Utf16View name);
    RegistryValue const* findValue(Utf16View name) const;
    /// False when nothing has changed.
    bool setValue(Utf16View name, DWORD type, std::vector<BYTE> data);
    bool removeValue(Utf16View name);
    /// Takes the key out of its parent; it and everything below it counts as deleted from now on.
    void remove();
    /// Takes everything out of the key.
    void clear();

private:
    void markDeleted();

    Utf16String name_;
    RegistryKey* parent_ = nullptr;
    int depth_ = 0;
    bool isDeleted_ = false;
    Keys keys_;
    Values values_;
};

/// A predefined key: its handle is predefinedHandle(number).
struct RegistryRoot {
    std::uint32_t number;
    Utf16View name;
    std::shared_ptr<RegistryKey> key = std::make_shared<RegistryKey>();
};

using RegistryRoots = std::array<RegistryRoot, 5>;
/// Empty roots of all predefined keys.
[[nodiscard]] RegistryRoots makeRegistryRoots();

/// The registry of the process, and its open handles.
struct RegistryState {
    struct OpenKey {
        std::shared_ptr<RegistryKey> key;
        REGSAM access;
    };

    std::mutex mutex; ///< guards everything here
    RegistryRoots roots = makeRegistryRoots();
    std::unordered_map<std::uintptr_t, OpenKey> handles;
    std::uintptr_t nextHandle = 0x100; ///< a handle is never given out twice
    bool isChanged = false;            ///< since it was loaded or written
};

/// Never destroyed.
[[nodiscard]] RegistryState& registryState();

/// The first component of a path, which is taken off it; empty at its end. Empty components are passed over.
[[nodiscard]] Utf16View takeComponent(Utf16View& path) noexcept;

} // namespace Zorvan::AttributeContainer
