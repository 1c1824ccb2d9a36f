// SPDX-License-Identifier: MIT
#include <AttributeContainer/Time.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using Zorvan::Time;

namespace {

std::vector<int> fieldsOf(Time const& time) {
    return {time.getYear(), time.getMonth(),  time.getDay(),
            time.getHour(), time.getMinute(), time.getSecond()};
}

TEST(Time, LocalFieldsComeBack) {
    EXPECT_EQ(fieldsOf(Time(2024, 2, 29, 13, 14, 15, 999)), (std::vector<int>{2024, 2, 29, 13, 14, 15}));
    EXPECT_EQ(fieldsOf(Time(3000, 12, 30, 23, 59, 59)), (std::vector<int>{3000, 12, 30, 23, 59, 59}));
    EXPECT_EQ(fieldsOf(Time(2024, 1, 32, 0, 0, 0)), (std::vector<int>{2024, 2, 1, 0, 0, 0}));
    double const base = Time(2024, 7, 1, 12, 0, 0).getSeconds();
    EXPECT_DOUBLE_EQ(Time(2024, 7, 1, 12, 0, 1, 250).getSeconds(), base + 1.25);
}

TEST(Time, DatesOutOfRangeGiveZeroAndFieldsOutOfRangeTheMillisecondsAtMost) {
    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    EXPECT_EQ(Time(1969, 12, 31, 23, 59, 59, 500).getSeconds(), 0);
    EXPECT_EQ(Time(1970, 1, 1, 12, 59, 59, 500).getSeconds(), 0);
    EXPECT_NE(Time(1970, 1, 1, 13, 0, 1).getSeconds(), 0);
    EXPECT_NE(Time(1970, 1, 2, 0, 0, 0).getSeconds(), 0);
    EXPECT_EQ(Time(3000, 12, 31, 0, 0, 0, 500).getSeconds(), 0);
    EXPECT_EQ(Time(3001, 1, 1, 0, 0, 0, 500).getSeconds(), 0);
    EXPECT_EQ(Time(2000, most, 1, 0, 0, 0, 500).getSeconds(), 0.5);
    EXPECT_EQ(Time(2000, least, 1, 0, 0, 0, 500).getSeconds(), 0.5);
    EXPECT_TRUE(std::isfinite(Time(2000, 1, most, most, most, most, most).getSeconds()));
    EXPECT_TRUE(std::isfinite(Time(2000, 1, least, least, least, least, least).getSeconds()));
}

TEST(Time, CalendarIsZeroWhereThereIsNone) {
    std::vector<int> const none(6, 0);
    for (double const seconds : {1e300, -1e300, 9.3e11, std::numeric_limits<double>::infinity(),
                                 std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(fieldsOf(Time(seconds)), none) << seconds;
}

TEST(Time, ValueHasAResolutionOfHundredNanoseconds) {
    Time time(1700000000.1234567);
    EXPECT_EQ(time.getSeconds(), 1700000000.1234567);
    time.setSeconds(0.00000012);
    EXPECT_EQ(time.getSeconds(), 1e-7);
    // Whole seconds are cut towards zero.
    EXPECT_EQ(fieldsOf(Time(1.9)), fieldsOf(Time(1)));
    EXPECT_EQ(fieldsOf(Time(-0.9)), fieldsOf(Time(0)));
}

TEST(Time, SteadyClockFollowsTheValue) {
    Time const now = Time::now();
    Time const later(now.getSeconds() + 1000);
    EXPECT_NEAR(later.getSteadySeconds() - now.getSteadySeconds(), 1000, 5);
    EXPECT_LT(now, later);
    EXPECT_EQ(now, Time(now.getSeconds()));
    EXPECT_GT(now.getSeconds(), 1.6e9);
}

} // namespace
