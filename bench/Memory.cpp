// SPDX-License-Identifier: MIT
#include "Memory.h"

#include <malloc.h>

namespace bench {

std::size_t bytesInUse() {
    auto const info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void forgetFreeMemory() { malloc_trim(0); }

void keepFreeMemory() {
    constexpr int most = 32 << 20; // that the allocator takes here
    mallopt(M_MMAP_THRESHOLD, most);
    mallopt(M_TRIM_THRESHOLD, -1);
}

} // namespace bench
