// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the system gives it this name
struct HKEY__;

namespace Zorvan::AttributeContainer {

/// The handle of an open registry key: the system's type of that name, without the system's header.
using HKEY = ::HKEY__*;

/// A place in the registry: a root key, and a path of keys below it, the prefix. On Windows the registry is
/// the system's; elsewhere it is one of this process, in memory (see RegistryFile).
///
///     RegKeys keys("Software\\Example", RegKeys::predefinedKey("HKEY_CURRENT_USER"), false);
///     keys.setKey("colour", "green");
///     keys.queryKey("colour"); // "green"
///
/// Names, paths and texts are UTF-8; the components of a path are separated by "\\", empty ones are dropped.
/// Names that hold a null character are refused. Unless it is said otherwise, operations that take the name
/// of a subkey work on the prefix and that name below it, and return whether the registry did what it was
/// asked; they throw nothing but std::bad_alloc. All threads see one registry, each call of which is whole;
/// one object may be used by several of them as long as nobody changes its prefix.
class KX_ATTRIBUTECONTAINER_API RegKeys {
public:
    /// HKEY_LOCAL_MACHINE with an empty prefix.
    RegKeys();
    /// Like setPrefix: the key of a prefix that is not empty is created. A program that only reads starts
    /// with an empty prefix, and then gives the text alone.
    RegKeys(std::string const& prefix, HKEY key, bool ownsKey);
    RegKeys(RegKeys const&) = delete;
    RegKeys& operator=(RegKeys const&) = delete;
    /// Closes the key if it is owned.
    ~RegKeys();

    /// The predefined key of a name such as "HKEY_CURRENT_USER" or "HKCU", in any case; null for others.
    static HKEY predefinedKey(std::string_view name) noexcept;
    /// The name of a key or a value in a form that is equal for all names which the registry takes for the
    /// same.
    static std::string foldName(std::string const& name);

    /// The path below the key.
    std::string getPrefix() const { return prefix_; }
    /// Replaces the text; no key is opened or created.
    void setPrefix(std::string const& prefix) { prefix_ = prefix; }
    /// Moves to another place, and creates the key of a prefix that is not empty; false when that fails. An
    /// owned key is closed, unless it is `key` itself. Does nothing when a prefix that is not empty stays the
    /// same but for its case, and the key too.
    bool setPrefix(std::string const& prefix, HKEY key, bool ownsKey);

    /// Whether the key can be opened, for writing or for reading.
    bool checkKey(std::string const& name, bool forWriting) const;
    /// Creates the key, and those above it, where they are missing. With `forEveryone` a new key gives
    /// everybody full access.
    bool createKey(std::string const& name, bool forEveryone) const;
    /// Gives everybody full access to the key.
    bool setAccessToEveryOne(std::string const& name) const;

    /// Stores `length` bytes as the value `valueName` of the key of the prefix. Without data, deletes the
    /// subkey of that name; an empty name deletes nothing.
    bool setKey(std::string const& valueName, unsigned char const* data, unsigned long length,
                unsigned long type) const;
    /// Stores a text as an expandable string.
    bool setKey(std::string const& valueName, std::string const& text) const;
    /// Reads a value of the key of the prefix into `buffer`, which has `*length` bytes; `*length` becomes
    /// the length of the value, also when that does not fit.
    bool queryKey(std::string const& valueName, unsigned char* buffer, unsigned long* length,
                  unsigned long* type) const;
    /// A value as text; empty when there is none, or it is longer than 511 characters.
    std::string queryKey(std::string const& valueName) const;

    /// Deletes a subkey of the held key, whatever the prefix is. A key that has subkeys stays. An empty name
    /// deletes nothing.
    bool deleteKey(std::string const& name) const;
    /// Deletes a value of the held key, whatever the prefix is.
    bool deleteValue(std::string const& valueName) const;
    /// Deletes the key with everything in it. An empty path deletes nothing.
    bool deleteTree(std::string const& name) const;
    /// Copies everything in the key `source` to the key `target`, which is created when it is missing. False
    /// when a name is empty, or the target lies in the source.
    bool copyTree(std::string const& source, std::string const& target) const;

    /// The names of the subkeys of the prefix; empty on failure.
    std::vector<std::string> enumerateKeys() const;
    /// The name of a subkey of the held key, whatever the prefix is; empty without one.
    std::string getSubKey(int index) const;
    /// The name of a value of the held key, whatever the prefix is; empty without one, and beyond 259
    /// characters.
    std::string getSubValue(int index) const;

    /// Opens the key of the prefix: a new object that owns that key and has no prefix. Empty when the key
    /// cannot be opened.
    std::shared_ptr<RegKeys> createFrom(bool forWriting) const;

    /// Writes a text in UTF-16 and two null characters; returns the number of bytes, or 0, and writes
    /// nothing, when the text is empty or does not fit.
    static int stringToMultiSZ(unsigned char* buffer, std::uint64_t size, std::string const& text);

private:
    std::string path(std::string_view name) const;

    std::string prefix_;
    HKEY key_;
    bool ownsKey_ = false;
};

} // namespace Zorvan::AttributeContainer
