// SPDX-License-Identifier: MIT
#include <AttributeContainer/Time.h>

#include "platform/LocalTime.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <limits>
#include <optional>
#include <ratio>

namespace Zorvan {

namespace {

using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;

constexpr std::int64_t ticksPerSecond = 10'000'000;
constexpr std::int64_t ticksPerMillisecond = 10'000;
constexpr double tickScale = 1e7;

template <class Clock>
double secondsOf() {
    return static_cast<double>(std::chrono::duration_cast<Ticks>(Clock::now().time_since_epoch()).count()) /
           tickScale;
}

/// The seconds since 1970 of a local date and time; 0 when the calendar has none.
std::int64_t secondsOfLocal(int year, int month, int day, int hour, int minute, int second) {
    if (month == std::numeric_limits<int>::min())
        return 0;
    std::tm local{};
    local.tm_year = year - 1900;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1;
    std::int64_t const seconds = std::mktime(&local);
    // Fields far out of range can lead further than ticks can count.
    constexpr std::int64_t limit = std::numeric_limits<std::int64_t>::max() / ticksPerSecond - 10'000'000;
    return seconds == -1 || seconds > limit || seconds < -limit ? 0 : seconds;
}

bool isAccepted(int year, int month, int day, int hour) {
    if (year < 1970 || year > 3000)
        return false;
    if (year == 1970 && month == 1 && day == 1 && hour < 13)
        return false;
    return !(year == 3000 && month == 12 && day == 31);
}

/// Empty when the value cannot be expressed in the local calendar.
std::optional<std::tm> localOf(double seconds) {
    double const ticks = std::trunc(seconds * tickScale);
    if (!(std::abs(ticks) < 9.2e18)) // beyond the tick counter, or no number
        return std::nullopt;
    std::tm local{};
    if (!AttributeContainer::toLocalTime(static_cast<std::int64_t>(ticks) / ticksPerSecond, local))
        return std::nullopt;
    return local;
}

/// One field of the local calendar, counted from `origin`; 0 when there is no such calendar.
int localField(double seconds, int std::tm::*field, int origin = 0) {
    auto const local = localOf(seconds);
    return local ? (*local).*field + origin : 0;
}

} // namespace

Time::Time() { setSeconds(0); }

Time::Time(double seconds) { setSeconds(seconds); }

Time::Time(int year, int month, int day, int hour, int minute, int second, int milliseconds) {
    if (!isAccepted(year, month, day, hour)) {
        setSeconds(0);
        return;
    }
    std::int64_t const ticks = milliseconds * ticksPerMillisecond +
                               secondsOfLocal(year, month, day, hour, minute, second) * ticksPerSecond;
    setSeconds(static_cast<double>(ticks) / tickScale);
}

Time Time::now() { return Time(secondsOf<std::chrono::system_clock>()); }

void Time::setSeconds(double seconds) {
    seconds_ = std::round(seconds * tickScale) / tickScale;
    steadySeconds_ =
        secondsOf<std::chrono::steady_clock>() + (seconds_ - secondsOf<std::chrono::system_clock>());
}

int Time::getYear() const { return localField(seconds_, &std::tm::tm_year, 1900); }
int Time::getMonth() const { return localField(seconds_, &std::tm::tm_mon, 1); }
int Time::getDay() const { return localField(seconds_, &std::tm::tm_mday); }
int Time::getHour() const { return localField(seconds_, &std::tm::tm_hour); }
int Time::getMinute() const { return localField(seconds_, &std::tm::tm_min); }
int Time::getSecond() const { return localField(seconds_, &std::tm::tm_sec); }

} // namespace Zorvan
