// SPDX-License-Identifier: MIT
#include "foundation/MakeError.h"

#include <gtest/gtest.h>

using namespace Zorvan::AttributeContainer;

namespace {

TEST(ErrorCode, CodesHaveTheirNameAndFourOfThemAreWarnings) {
    std::string names;
    for (unsigned value = 0; value < 16; ++value) {
        auto const code = static_cast<ErrorCode>(value);
        Result const error = makeError("Observable", 618, code);
        EXPECT_EQ(error->getCode(), code);
        EXPECT_EQ(error->getFile() + std::to_string(error->getLine()), "Observable618");
        names += std::string(errorCodeName(code)) + (error->isWarning() ? "! " : " ");
    }
    EXPECT_EQ(names,
              "UnknownKeyword StreamFailure NoContext ObserverUnresolved TargetMissing ContentSkipped! "
              "NotMarked! AttributeNotCreated UnknownContent! InvalidName WriteProtected NotSupported "
              "UnknownClass! ObjectNotCreated ObjectContentUnknown unknown ");
    EXPECT_FALSE(isWarning(static_cast<ErrorCode>(0xffffffff)));
}

} // namespace
