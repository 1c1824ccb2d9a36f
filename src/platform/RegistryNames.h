// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Utf16.h"

namespace Zorvan::AttributeContainer {

/// The order of the registry's names: unit by unit in upper case, by a table that knows nothing of locales.
/// Characters beyond U+FFFF, which are pairs of units, have no case there. Negative, zero or positive.
[[nodiscard]] int compareRegistryNames(Utf16View a, Utf16View b) noexcept;

/// The name in upper case: equal for names that the registry takes for the same.
[[nodiscard]] Utf16String foldRegistryName(Utf16View name);

} // namespace Zorvan::AttributeContainer
