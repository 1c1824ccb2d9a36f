// SPDX-License-Identifier: MIT
#include "foundation/MakeError.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

using namespace Zorvan::AttributeContainer;

namespace {

TEST(ErrorCode, OnlyFourCodesAreWarnings) {
    std::set<unsigned> warnings;
    for (unsigned value = 0; value < 40; ++value)
        if (makeError("Test", 1, static_cast<ErrorCode>(value))->isWarning())
            warnings.insert(value);
    EXPECT_EQ(warnings, (std::set<unsigned>{5, 6, 8, 12}));
    EXPECT_FALSE(isWarning(static_cast<ErrorCode>(0xffffffff)));
}

TEST(ErrorCode, NamesAreThoseOfTheEnumerators) {
    char const* const names[] = {"UnknownKeyword",
                                 "StreamFailure",
                                 "NoContext",
                                 "ObserverUnresolved",
                                 "TargetMissing",
                                 "ContentSkipped",
                                 "NotMarked",
                                 "AttributeNotCreated",
                                 "UnknownContent",
                                 "InvalidName",
                                 "WriteProtected",
                                 "NotSupported",
                                 "UnknownClass",
                                 "ObjectNotCreated",
                                 "ObjectContentUnknown",
                                 "unknown"};
    for (unsigned value = 0; value < std::size(names); ++value)
        EXPECT_STREQ(errorCodeName(static_cast<ErrorCode>(value)), names[value]);
    EXPECT_EQ(static_cast<unsigned>(ObjectContentUnknown), 14u);
}

TEST(ErrorCode, RaisedErrorKeepsFileLineAndCode) {
    Result const error = makeError("Observable", 618, StreamFailure);
    EXPECT_EQ(error->getFile(), "Observable");
    EXPECT_EQ(error->getLine(), 618);
    EXPECT_EQ(error->getCode(), StreamFailure);
}

} // namespace
