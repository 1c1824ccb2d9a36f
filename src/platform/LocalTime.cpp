// SPDX-License-Identifier: MIT
#include "platform/LocalTime.h"

#include <time.h> // NOLINT(modernize-deprecated-headers): functions that are not in <ctime>

namespace Zorvan::AttributeContainer {

bool toLocalTime(std::int64_t seconds, std::tm& local) noexcept {
#if defined(_WIN32)
    __time64_t const time = seconds;
    return _localtime64_s(&local, &time) == 0;
#else
    auto const time = static_cast<std::time_t>(seconds);
    if (time != seconds)
        return false;
    // localtime_r alone may miss a change of the time zone that mktime sees.
    tzset();
    return localtime_r(&time, &local) != nullptr;
#endif
}

} // namespace Zorvan::AttributeContainer
