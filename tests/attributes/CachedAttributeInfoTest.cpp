// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"

#include <AttributeContainer/CachedAttributeInfo.h>

namespace Zorvan::AttributeContainer::Testing {

namespace {

void stage(Attribute& attribute, std::shared_ptr<Attribute> cached) {
    attribute.addNotifyInfo(std::make_shared<CachedAttributeInfo>(std::move(cached)));
    Attribute::setIsCachedAttributePending(true);
}

TEST(CachedAttributeInfo, ReadsOfThisThreadSeeTheStagedValue) {
    CustAttr<int> attribute(1);
    stage(attribute, std::make_shared<CustAttr<int>>(7));
    EXPECT_EQ(attribute.getValueAsText(), "7");
    std::ostringstream out;
    EXPECT_EQ(attribute.writeTo(out, std::make_shared<WriteContextBase>()), nullptr);
    EXPECT_EQ(out.str(), "\nValue 7");
    EXPECT_EQ(CustAttr<int>(5).getValue(), 5) << "nothing is staged for this one";
    Attribute::setIsCachedAttributePending(false);
    attribute.setValue(2);
    EXPECT_EQ(attribute.getValue(), 2) << "without the switch the info has no effect";
}

TEST(CachedAttributeInfo, AChangeCommitsOrDropsTheStagedValue) {
    Change const setAgain = [](auto& a) { a.setValue(a.getValue()); };
    auto const seven = std::make_shared<CustAttr<int>>(7);
    auto const fraction = std::make_shared<CustAttr<double>>(2.5);
    Log const all{"judge?", "told"}, told{"told"}, none;
    std::tuple<char const*, std::shared_ptr<Attribute>, bool, Change, int, bool, Log> const rows[] = {
        {"touched", seven, false, touch, 7, false, told},
        {"touched, blocked", seven, true, touch, 7, false, none},
        {"touched, of another type", fraction, false, touch, 1, false, told},
        {"touched, without attribute", nullptr, false, touch, 1, true, told},
        {"set", seven, false, [](auto& a) { a.setValue(3); }, 3, false, all},
        {"set to the staged value", seven, false, setAgain, 7, false, all},
        {"set, without attribute", nullptr, false, setAgain, 1, false, all},
        {"refused", seven, false, setNine, 1, true, {"judge?"}},
        {"set, blocked", seven, true, setNine, 9, false, none},
        {"text", seven, false, [](auto& a) { assignText(a, "4"); }, 4, false, all},
    };
    for (auto const& [what, cached, isBlocked, change, value, isStillStaged, log] : rows) {
        SCOPED_TRACE(what);
        Watched watched;
        watched.refuseNine();
        stage(*watched.attribute, cached);
        isBlocked ? blocked(change)(*watched.attribute) : change(*watched.attribute);
        EXPECT_EQ(watched.hasInfos(), isStillStaged);
        EXPECT_EQ(Attribute::isCachedAttributePending(), isStillStaged);
        Attribute::setIsCachedAttributePending(false);
        EXPECT_EQ(watched.value(), value);
        EXPECT_EQ(watched.log, log);
    }
}

} // namespace

} // namespace Zorvan::AttributeContainer::Testing
