// SPDX-License-Identifier: MIT
#include "platform/Guid.h"

#include <cstddef>
#include <cstring>

#if defined(_WIN32)
#include <windows.h>

#include <objbase.h>
#else
#include <sys/random.h>
#include <unistd.h>
#endif

namespace Zorvan::AttributeContainer {

#if defined(_WIN32)

static_assert(sizeof(Guid) == sizeof(GUID));

bool createGuid(Guid& guid) noexcept {
    GUID created;
    if (CoCreateGuid(&created) != S_OK)
        return false;
    std::memcpy(&guid, &created, sizeof guid);
    return true;
}

#else

bool createGuid(Guid& guid) noexcept {
    Guid created{};
    if (getentropy(&created, sizeof created) != 0)
        return false;
    created.Data3 = static_cast<std::uint16_t>((created.Data3 & 0x0fff) | 0x4000);  // version 4
    created.Data4[0] = static_cast<std::uint8_t>((created.Data4[0] & 0x3f) | 0x80); // the variant of RFC 4122
    guid = created;
    return true;
}

#endif

uuids::uuid toUuid(Guid const& guid) noexcept {
    uuids::uuid result;
    for (std::size_t i = 0; i < 4; ++i)
        result[i] = static_cast<std::uint8_t>(guid.Data1 >> (24 - 8 * i));
    for (std::size_t i = 0; i < 2; ++i) {
        result[4 + i] = static_cast<std::uint8_t>(guid.Data2 >> (8 - 8 * i));
        result[6 + i] = static_cast<std::uint8_t>(guid.Data3 >> (8 - 8 * i));
    }
    for (std::size_t i = 0; i < 8; ++i)
        result[8 + i] = guid.Data4[i];
    return result;
}

} // namespace Zorvan::AttributeContainer
