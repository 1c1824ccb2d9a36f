// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Uuid.h>

#include <cstdint>

namespace Zorvan::AttributeContainer {

/// The platform's record of a globally unique identifier; the first three fields are numbers of the machine's
/// byte order.
struct Guid {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};

/// Makes a new identifier: by `CoCreateGuid` on Windows, elsewhere a random one (version 4) from the system's
/// random source. False, and `guid` unchanged, when that fails.
[[nodiscard]] bool createGuid(Guid& guid) noexcept;

/// The same identifier in the byte order of its text.
[[nodiscard]] uuids::uuid toUuid(Guid const& guid) noexcept;

} // namespace Zorvan::AttributeContainer
