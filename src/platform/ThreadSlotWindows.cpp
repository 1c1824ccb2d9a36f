// SPDX-License-Identifier: MIT
#include "platform/ThreadSlot.h"

#include <windows.h>

namespace Zorvan::AttributeContainer {

unsigned long makeThreadSlot(void (*atThreadEnd)(void*)) noexcept {
    // Threads that end later call into this module, so it stays.
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&makeThreadSlot), &self);
    // On 64-bit systems there is only one calling convention.
    return FlsAlloc(atThreadEnd);
}

void* threadSlotValue(unsigned long slot) noexcept { return FlsGetValue(slot); }

bool setThreadSlotValue(unsigned long slot, void* value) noexcept { return FlsSetValue(slot, value) != 0; }

} // namespace Zorvan::AttributeContainer
