// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"

#include <AttributeContainer/AttributeWriteProtection.h>
#include <ErrorHandling/Logger.h>

#include <gtest/gtest.h>

#include <optional>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;
using Zorvan::ErrorHandling::Logger;
using Zorvan::ErrorHandling::LogMessage;

namespace {

using Text = std::optional<std::string>;

/// Collects the messages of the log.
class AttributeWriteProtectionTest : public testing::Test {
protected:
    AttributeWriteProtectionTest()
        : before_(Logger::setSink([this](LogMessage const& m) {
              messages.push_back(std::to_string(m.level) + " " + m.file + ":" + std::to_string(m.line) + " " +
                                 m.function + ": " + m.message);
          })) {}
    ~AttributeWriteProtectionTest() override { Logger::setSink(before_); }

    static std::string message(std::string const& place, std::string const& original,
                               std::string const& requested) {
        auto const function = place.substr(place.find(' ') + 1);
        return "3 AttributeWriteProtection:" + place.substr(0, place.find(' ')) +
               " Zorvan::AttributeContainer::AttributeWriteProtection::" + function +
               ": Trying to modify write protected attribute value. Original value: " + original +
               " New requested value: " + requested;
    }

    Log messages;

private:
    std::shared_ptr<Zorvan::ErrorHandling::LogSink> before_;
};

Text always(Attribute&) { return "requested"; }

/// Objects to a value that is proposed, or stored, unless it is 1.
Text unlessOne(Attribute& attribute) {
    int const proposed = proposedTo(attribute);
    int const value = proposed ? proposed : static_cast<CustAttr<int>&>(attribute).getValue();
    return value == 1 ? Text() : Text(std::to_string(value));
}

TEST_F(AttributeWriteProtectionTest, AChangeIsRefusedWithTheReason) {
    Watched watched;
    auto const protection = AttributeWriteProtection::create(watched.attribute, unlessOne);
    std::string reason;
    watched.pre("lower", 1, [&](Observable& a, Cause const&) {
        auto const info = std::static_pointer_cast<InfoFailed>(a.lookupNotifyInfo(typeid(InfoFailed)));
        reason = info->error->getFile() + std::to_string(info->error->getLine());
        EXPECT_EQ(info->error->getCode(), WriteProtected);
        return Action::ExecOk;
    });
    watched.attribute->setValue(2);
    EXPECT_EQ(watched.value(), 1);
    EXPECT_EQ(reason, "AttributeWriteProtection106");
    EXPECT_EQ(messages, Log{message("33 toChangeNotify", "1", "2")});
    EXPECT_EQ(std::as_const(*protection).getName(), "AttributeWriteProtection");
}

TEST_F(AttributeWriteProtectionTest, AChangeThatAskedNobodyIsUndone) {
    Watched watched;
    auto const protection = AttributeWriteProtection::create(watched.attribute, unlessOne);
    Log seen;
    watched.post("told", 1, [&](Observable&, Cause const& cause) {
        bool const isRestored = cause && &cause->get() == protection.get();
        seen.push_back(std::to_string(watched.value()) + (isRestored ? " restored" : ""));
        return Action::ExecOk;
    });
    assignText(*watched.attribute, "2");
    EXPECT_EQ(seen, (Log{"1 restored", "1"}));
    EXPECT_EQ(messages, Log{message("53 changedNotify", "1", "2")});

    auto const exact = std::make_shared<CustAttr<double>>(0.1234567890123);
    auto const other = AttributeWriteProtection::create(exact, always);
    assignText(*exact, "5");
    EXPECT_EQ(exact->getValue(), 0.1234567890123) << "more than its text tells";
}

TEST_F(AttributeWriteProtectionTest, AllowedChangesPassAndTheProtectionEndsWithItsObject) {
    Watched watched;
    auto protection = AttributeWriteProtection::create(watched.attribute, [](Attribute&) { return Text(); });
    watched.attribute->setValue(2);
    EXPECT_EQ(watched.value(), 2);
    protection = AttributeWriteProtection::create(watched.attribute, always);
    watched.attribute->setValue(3, protection, nullptr, nullptr);
    EXPECT_EQ(watched.value(), 3) << "its own change is not refused";
    protection.reset();
    watched.attribute->setValue(4);
    EXPECT_EQ(watched.value(), 4);
    EXPECT_EQ(messages, Log{});
    EXPECT_EQ(AttributeWriteProtection::create(nullptr, always), nullptr);
    EXPECT_EQ(AttributeWriteProtection::create(watched.attribute, nullptr), nullptr);
}

TEST_F(AttributeWriteProtectionTest, TwoProtectionsDoNotRestoreEachOtherForEver) {
    Watched watched;
    auto const first = AttributeWriteProtection::create(watched.attribute, always);
    watched.attribute->setValue(3, first, nullptr, nullptr);
    auto const second = AttributeWriteProtection::create(watched.attribute, always);
    assignText(*watched.attribute, "5");
    EXPECT_LT(messages.size(), 10u);
    EXPECT_TRUE(watched.value() == 1 || watched.value() == 3) << watched.value();
}

TEST_F(AttributeWriteProtectionTest, TheCheckMayLetGoOfEverything) {
    for (bool const isText : {false, true}) {
        auto attribute = std::make_shared<CustAttr<int>>(1);
        auto const kept = std::make_shared<std::shared_ptr<AttributeWriteProtection>>();
        *kept = AttributeWriteProtection::create(attribute, [&attribute, kept](Attribute&) {
            std::string const reason = "let go of";
            kept->reset();
            attribute.reset();
            return Text(reason);
        });
        isText ? assignText(*attribute, "2") : attribute->setValue(2);
        EXPECT_EQ(attribute, nullptr);
        EXPECT_NE(messages.back().find("let go of"), std::string::npos);
    }
}

} // namespace
