// SPDX-License-Identifier: MIT
#include <AttributeContainer/ErrorCode.h>

#include <gtest/gtest.h>

using namespace Zorvan::AttributeContainer;

namespace {

TEST(ErrorCode, CodesHaveTheirNameAndFourOfThemAreWarnings) {
    std::string names;
    for (unsigned value = 0; value < 16; ++value) {
        auto const code = static_cast<ErrorCode>(value);
        names += std::string(errorCodeName(code)) + (isWarning(code) ? "! " : " ");
    }
    EXPECT_EQ(names,
              "UnknownKeyword StreamFailure NoContext ObserverUnresolved TargetMissing ContentSkipped! "
              "NotMarked! AttributeNotCreated UnknownContent! InvalidName WriteProtected NotSupported "
              "UnknownClass! ObjectNotCreated ObjectContentUnknown unknown ");
    EXPECT_FALSE(isWarning(static_cast<ErrorCode>(0xffffffff)));
}

} // namespace
