// SPDX-License-Identifier: MIT
#include <AttributeContainer/Time.h>

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>

using Zorvan::Time;

namespace {

using Fields = std::vector<int>;

Fields fieldsOf(Time const& time) {
    return {time.getYear(), time.getMonth(),  time.getDay(),
            time.getHour(), time.getMinute(), time.getSecond()};
}

TEST(Time, FieldsAreLocalTimeWithTheDaylightSavingOfTheirDate) {
    EXPECT_EQ(fieldsOf(Time(3000, 12, 30, 23, 59, 59)), (Fields{3000, 12, 30, 23, 59, 59}));
    EXPECT_EQ(fieldsOf(Time(2024, 1, 32, 0, 0, 0)), (Fields{2024, 2, 1, 0, 0, 0}));
    for (int const month : {1, 7}) {
        std::tm local{};
        local.tm_year = 124;
        local.tm_mon = month - 1;
        local.tm_mday = 15;
        local.tm_hour = 12;
        local.tm_isdst = -1;
        EXPECT_EQ(Time(2024, month, 15, 12, 0, 1, 250).getSeconds(),
                  static_cast<double>(std::mktime(&local)) + 1.25);
    }
}

TEST(Time, DatesAndCalendarsOutOfRangeAreZero) {
    constexpr int most = 0x7fffffff, least = -most - 1;
    EXPECT_EQ(Time(1969, 12, 31, 23, 59, 59, 500).getSeconds(), 0);
    EXPECT_EQ(Time(1970, 1, 1, 12, 59, 59, 500).getSeconds(), 0);
    EXPECT_NE(Time(1970, 1, 1, 13, 0, 1).getSeconds(), 0);
    EXPECT_EQ(Time(3000, 12, 31, 0, 0, 0, 500).getSeconds(), 0);
    EXPECT_EQ(Time(2000, least, 1, 0, 0, 0, 500).getSeconds(), 0.5);
    EXPECT_TRUE(std::isfinite(Time(2000, 1, most, most, most, most, most).getSeconds()));
    EXPECT_TRUE(std::isfinite(Time(2000, 1, least, least, least, least, least).getSeconds()));
    for (double const seconds : {1e300, -1e300, 9.3e11, static_cast<double>(NAN)})
        EXPECT_EQ(fieldsOf(Time(seconds)), Fields(6)) << seconds;
}

TEST(Time, ValueHasAResolutionOfHundredNanosecondsAndTheSteadyClockFollowsIt) {
    EXPECT_EQ(Time(1700000000.1234567).getSeconds(), 1700000000.1234567);
    EXPECT_EQ(Time(0.00000012).getSeconds(), 1e-7);
    EXPECT_EQ(fieldsOf(Time(-0.9)), fieldsOf(Time(0.9))) << "whole seconds are cut towards zero";
    Time const now = Time::now();
    EXPECT_GT(now.getSeconds(), 1.6e9);
    EXPECT_NEAR(Time(now.getSeconds() + 1000).getSteadySeconds() - now.getSteadySeconds(), 1000, 5);
}

} // namespace
