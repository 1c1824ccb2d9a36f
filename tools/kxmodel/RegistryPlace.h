// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/RegKeys.h>
#include <AttributeContainer/RegistryFile.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kxmodel {

/// The key that a call names, and the file that keeps the registry meanwhile. What was not committed is not
/// in that file afterwards.
class RegistryPlace {
public:
    /// Takes a key such as "HKCU\\Software\\Example". Throws FileError when its root is unknown, or the file
    /// cannot keep the registry.
    RegistryPlace(std::string const& key, std::optional<std::string> const& hive);
    ~RegistryPlace();

    /// How messages name a key below this one.
    std::string nameOf(std::string const& below) const;
    /// A key below this one, or this one for an empty path; it is neither opened nor made.
    Zorvan::AttributeContainer::RegKeys const& at(std::string const& below);
    /// Opens such a key. Empty when there is none, or it cannot be opened.
    std::shared_ptr<Zorvan::AttributeContainer::RegKeys> open(std::string const& below, bool forWriting) {
        return at(below).createFrom(forWriting);
    }
    /// Makes this key, those above it, and those below it that paths name, each behind the one that it is
    /// in. Throws FileError when one cannot be made; those that were made are removed again.
    void make(std::vector<std::string> const& belows);
    /// Writes the file. Throws FileError.
    void commit();

private:
    std::string key_;
    std::optional<std::string> hive_;
    std::string path_; ///< Below the root.
    Zorvan::AttributeContainer::RegistryFile file_;
    Zorvan::AttributeContainer::HKEY root_ = nullptr;
    Zorvan::AttributeContainer::RegKeys keys_;
};

/// A value of the registry as it is stored.
struct StoredValue {
    static constexpr std::size_t maxTextSize = 1024; ///< Bytes of a text that can be read.

    unsigned long type = 0;
    unsigned long size = 0; ///< In bytes.
    bool isTerminated = false;

    /// Whether it is a string, which may have variables to be expanded.
    bool isString() const { return type == 1 || type == 2; }
    /// Why the text of a string is not read; empty when it is.
    std::string whyUnreadable() const;
};

/// Empty when there is no such value.
std::optional<StoredValue> storedValue(Zorvan::AttributeContainer::RegKeys const& key,
                                       std::string const& name);

} // namespace kxmodel
