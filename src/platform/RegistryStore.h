// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Registry.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

struct RegistryValue {
    Utf16String name;
    DWORD type = 0;
    std::vector<BYTE> data;
};

/// A key of the registry in memory, with its values and subkeys in the order of their names.
class RegistryKey {
public:
    static constexpr std::size_t maxNameLength = 255;
    static constexpr std::size_t maxValueNameLength = 16383;
    /// Keys below one another; recursion over a tree of keys is limited by it.
    static constexpr int maxDepth = 512;

    RegistryKey() = default;
    RegistryKey(RegistryKey const&) = delete;
    RegistryKey& operator=(RegistryKey const&) = delete;

    Utf16String const& name() const { return name_; }
    std::vector<std::shared_ptr<RegistryKey>> const& keys() const { return keys_; }
    std::vector<RegistryValue> const& values() const { return values_; }
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
    std::size_t place(Utf16View name) const;
    std::size_t valuePlace(Utf16View name) const;
    void markDeleted();

    Utf16String name_;
    RegistryKey* parent_ = nullptr;
    int depth_ = 0;
    bool isDeleted_ = false;
    std::vector<std::shared_ptr<RegistryKey>> keys_;
    std::vector<RegistryValue> values_;
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
