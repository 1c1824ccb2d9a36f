// SPDX-License-Identifier: MIT
#pragma once

#include "platform/RegistryStore.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// What is wrong with a registry text, and in which line, counted from 1.
struct RegistryTextError {
    std::string description;
    std::uint64_t line;
};

/// The keys and values below the roots, as registry editors export them (version 5): UTF-16, low byte first,
/// behind a byte-order mark. Texts that quotes cannot hold are written as bytes, so that nothing is lost.
[[nodiscard]] std::string writeRegistryText(RegistryRoots const& roots);

/// Reads such a text into empty roots. Only what an export can hold is understood: no deletions. The text
/// must end with a whole line. After an error the roots hold a part.
[[nodiscard]] std::optional<RegistryTextError> readRegistryText(std::string_view bytes, RegistryRoots& roots);

} // namespace Zorvan::AttributeContainer
