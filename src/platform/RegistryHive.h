// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Zorvan::AttributeContainer {

/// Why a file cannot keep the registry.
struct HiveError {
    enum class Kind { Unavailable, FileFailure, WrongText };

    Kind kind;
    std::string description;
    std::uint64_t line = 0; ///< of the wrong text
};

/// Whether the registry of this system can be kept in a file.
[[nodiscard]] bool isHiveSupported() noexcept;

/// Loads a file, and holds it until it is detached; the file, and the registry, are as before on failure.
[[nodiscard]] std::optional<HiveError> attachHive(std::string const& path);

/// Writes the file if the registry has changed, all of it or nothing.
[[nodiscard]] std::optional<HiveError> flushHive();

/// Writes the file if the registry has changed, empties the registry, and gives the file free; what is open
/// counts as deleted. On failure the file stays attached.
[[nodiscard]] std::optional<HiveError> detachHive();

/// The same without writing: what was not flushed is lost.
void dropHive() noexcept;

} // namespace Zorvan::AttributeContainer
