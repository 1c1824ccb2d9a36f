// SPDX-License-Identifier: MIT
#pragma once

#include <ctime>

namespace bench {

/// The processor time of this thread in seconds; other programs do not show in it.
inline double processorTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // namespace bench
