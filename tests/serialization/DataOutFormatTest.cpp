// SPDX-License-Identifier: MIT
#include <AttributeContainer/DataOutFormat.h>

#include "StreamFixture.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Zorvan::AttributeContainer {

TEST(DataOutFormatTest, LocalesFlagsAndOlderTextOfTheStreamDoNotMatter) {
    OddGlobalLocale const odd;
    std::string const older(600, '.');
    std::ostringstream out(older);
    out.imbue(oddLocale());
    out << std::hex << std::showpos << std::fixed << std::boolalpha;
    out.width(30);
    DataOutFormat<int>(out, ModelFormat::Text).put(1234567);
    DataOutFormat<std::vector<bool>>(out, ModelFormat::Text).put({true});
    DataOutFormat<VersionNum>(out, ModelFormat::Text).put(VersionNum("v", 1000, 2000, 0, 0, 0, ""));
    DataOutFormat<double>(out, ModelFormat::Text).put(-1234.5);
    std::string const text = "1234567{ true } \"v\" 1000.2000.0.0-1234.5";
    EXPECT_EQ(out.str(), text + older.substr(text.size()));
}

TEST(DataOutFormatTest, PrecisionIsLeftAtEightAndOnlyScanPointsUseIt) {
    ScanPtColor<Vec3d<float>> const point({0.123456789F, 2, NAN}, {1, 2, 3, 255});
    std::ostringstream out;
    out.precision(3);
    DataOutFormat<int>(out, ModelFormat::Text).put(1);
    DataOutFormat<ScanPtColor<Vec3d<float>>>(out, ModelFormat::Text).put(point);
    EXPECT_EQ(out.precision(), 3);
    DataOutFormat<double>(out, ModelFormat::Text).put(12.5);
    EXPECT_EQ(out.precision(), 8);
    EXPECT_EQ(out.str(), "10.123 2 0 1 2 3 25512.5");
}

TEST(DataOutFormatTest, FailuresAreLeftInTheStream) {
    std::stringbuf readOnly("", std::ios_base::in);
    std::ostream full(&readOnly);
    DataOutFormat<std::string>(full, ModelFormat::Text).put("abcdef");
    EXPECT_TRUE(full.bad());
    std::ostringstream failed;
    failed.setstate(std::ios_base::failbit);
    DataOutFormat<int>(failed, ModelFormat::Text).put(1);
    EXPECT_EQ(failed.str(), "") << "nothing is written to a stream that is not good";

    BreakingBuffer throwing;
    std::ostream broken(&throwing);
    EXPECT_NO_THROW(DataOutFormat<int>(broken, ModelFormat::Text).put(1));
    EXPECT_TRUE(broken.bad());
    broken.clear();
    broken.exceptions(std::ios_base::badbit);
    EXPECT_THROW(DataOutFormat<int>(broken, ModelFormat::Text).put(1), std::ios_base::failure);
}

} // namespace Zorvan::AttributeContainer
