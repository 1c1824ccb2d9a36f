// SPDX-License-Identifier: MIT
#include "CapturedLog.h"
#include "attributes/AttributeFixture.h"

#include <AttributeContainer/AttributeWriteProtection.h>

namespace Zorvan::AttributeContainer::Testing {

namespace {

using Text = std::optional<std::string>;

struct AttributeWriteProtectionTest : testing::Test {
    CapturedLog log;
    Watched watched;
};

Text always(Attribute&) { return "requested"; }

/// Objects to a value that is proposed, or stored, unless it is 1.
Text unlessOne(Attribute& attribute) {
    int const proposed = proposedTo(attribute);
    int const value = proposed ? proposed : static_cast<CustAttr<int>&>(attribute).getValue();
    return value == 1 ? Text() : Text(std::to_string(value));
}

TEST_F(AttributeWriteProtectionTest, AChangeIsRefusedWithTheReasonOrUndone) {
    auto const protection = AttributeWriteProtection::create(watched.attribute, unlessOne);
    watched.pre("lower", 1, doing([](auto& a, auto&) {
                    auto const info = a.lookupNotifyInfo(typeid(InfoFailed));
                    EXPECT_EQ(info != nullptr, proposedTo(a) == 2);
                    EXPECT_TRUE(!info || static_cast<InfoFailed&>(*info).error->getCode() == WriteProtected);
                }));
    Log seen;
    watched.post("told", 1, doing([&](auto& a, Cause const& cause) {
                     bool const isRestored = cause && &cause->get() == protection.get();
                     seen.push_back(a.getValueAsText() + (isRestored ? " restored" : ""));
                 }));
    watched.attribute->setValue(2);
    EXPECT_EQ(watched.value(), 1);
    assignText(*watched.attribute, "2");
    watched.attribute->setValue(1);
    EXPECT_EQ(seen, (Log{"1 restored", "1", "1"})) << "nobody is told of what was refused";
    std::string const text =
        " Trying to modify write protected attribute value. Original value: 1 New requested value: 2";
    EXPECT_EQ(log.messages, (Log{"3 33" + text, "3 53" + text}));

    auto const exact = std::make_shared<CustAttr<double>>(0.1234567890123);
    auto const other = AttributeWriteProtection::create(exact, always);
    assignText(*exact, "5");
    EXPECT_EQ(exact->getValue(), 0.1234567890123) << "more than its text tells";
}

TEST_F(AttributeWriteProtectionTest, ItsOwnChangesPassAndItEndsWithItsObject) {
    auto protection = AttributeWriteProtection::create(watched.attribute, always);
    watched.attribute->setValue(3, protection, nullptr, nullptr);
    EXPECT_EQ(watched.value(), 3) << "its own change is not refused";
    protection.reset();
    watched.attribute->setValue(4);
    EXPECT_EQ(watched.value(), 4);
    EXPECT_EQ(log.messages, Log{});
    EXPECT_EQ(AttributeWriteProtection::create(nullptr, always), nullptr);
    EXPECT_EQ(AttributeWriteProtection::create(watched.attribute, nullptr), nullptr);
}

TEST_F(AttributeWriteProtectionTest, TwoProtectionsDoNotRestoreEachOtherForEver) {
    auto const first = AttributeWriteProtection::create(watched.attribute, always);
    watched.attribute->setValue(3, first, nullptr, nullptr);
    auto const second = AttributeWriteProtection::create(watched.attribute, always);
    assignText(*watched.attribute, "5");
    EXPECT_LT(log.messages.size(), 10u);
    EXPECT_TRUE(watched.value() == 1 || watched.value() == 3) << watched.value();
}

} // namespace

} // namespace Zorvan::AttributeContainer::Testing
