// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

namespace Zorvan {

/// A point in time on the system clock, with the same moment on the steady clock beside it.
class KX_ATTRIBUTECONTAINER_API Time {
public:
    /// 1970-01-01 00:00 UTC.
    Time();
    /// Seconds since 1970-01-01 00:00 UTC, rounded to 100 ns.
    explicit Time(double seconds);
    /// A local time of the years 1970 to 3000, without 1 January 1970 before 13:00 and without 31 December
    /// 3000; other dates give 0 seconds. Whether daylight saving is on is looked up. Fields beyond their
    /// range carry over (32 January is 1 February); when the calendar has no such moment the milliseconds
    /// alone remain.
    Time(int year, int month, int day, int hour, int minute, int second, int milliseconds = 0);

    /// The current time.
    [[nodiscard]] static Time now();

    /// Seconds since 1970-01-01 00:00 UTC.
    [[nodiscard]] double getSeconds() const noexcept { return seconds_; }
    /// The same moment on the steady clock, as seen when the value was set; in seconds.
    [[nodiscard]] double getSteadySeconds() const noexcept { return steadySeconds_; }
    /// Sets the value in seconds since 1970-01-01 00:00 UTC, rounded to 100 ns.
    void setSeconds(double seconds);

    /// The local calendar of the value reduced to whole seconds (towards zero). All of them are 0 when it
    /// cannot be expressed there. Months and days count from 1, the year is complete.
    [[nodiscard]] int getYear() const;
    [[nodiscard]] int getMonth() const;
    [[nodiscard]] int getDay() const;
    [[nodiscard]] int getHour() const;
    [[nodiscard]] int getMinute() const;
    [[nodiscard]] int getSecond() const;

    /// Compare by the system clock.
    friend bool operator==(Time const& a, Time const& b) noexcept { return a.seconds_ == b.seconds_; }
    friend bool operator<(Time const& a, Time const& b) noexcept { return a.seconds_ < b.seconds_; }

private:
    double seconds_ = 0;
    double steadySeconds_ = 0;
};

} // namespace Zorvan
