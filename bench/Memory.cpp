// SPDX-License-Identifier: MIT
#include "Memory.h"

#include <malloc.h>

namespace bench {

std::size_t bytesInUse() {
    auto const info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void forgetFreeMemory() { malloc_trim(0); }

} // namespace bench
