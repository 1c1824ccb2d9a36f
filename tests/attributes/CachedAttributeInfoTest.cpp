// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"

#include <AttributeContainer/BlockObserver.h>
#include <AttributeContainer/CachedAttributeInfo.h>
#include <AttributeContainer/WriteContextBase.h>

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <thread>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

void stage(Attribute& attribute, std::shared_ptr<Attribute> cached) {
    attribute.addNotifyInfo(std::make_shared<CachedAttributeInfo>(std::move(cached)));
    Attribute::setIsCachedAttributePending(true);
}

TEST(CachedAttributeInfo, ReadsOfThisThreadSeeTheStagedValue) {
    CustAttr<int> attribute(1);
    stage(attribute, std::make_shared<CustAttr<int>>(7));
    EXPECT_EQ(attribute.getValue(), 7);
    EXPECT_EQ(attribute.getValueAsText(), "7");
    EXPECT_TRUE(attribute.isEqual(CustAttr<int>(7)));
    EXPECT_EQ(attribute.duplicate(CreateType::Deep, std::nullopt)->getValueAsText(), "7");
    std::ostringstream out;
    EXPECT_EQ(attribute.writeTo(out, std::make_shared<WriteContextBase>()), nullptr);
    EXPECT_EQ(out.str(), "\nValue 7");
    EXPECT_EQ(CustAttr<int>(5).getValue(), 5) << "nothing is staged for this one";
    int elsewhere = 0;
    std::thread([&] { elsewhere = attribute.getValue(); }).join();
    EXPECT_EQ(elsewhere, 1);
    Attribute::setIsCachedAttributePending(false);
    attribute.setValue(2);
    EXPECT_EQ(attribute.getValue(), 2);
    EXPECT_TRUE(attribute.lookupNotifyInfo(typeid(CachedAttributeInfo)))
        << "without the switch it has no effect";
}

TEST(CachedAttributeInfo, AChangeCommitsOrDropsTheStagedValue) {
    using Change = std::function<void(CustAttr<int>&)>;
    Change const touch = [](auto& a) { a.touch(nullptr, nullptr); };
    Change const setNine = [](auto& a) { a.setValue(9); };
    auto const seven = std::make_shared<CustAttr<int>>(7);
    auto const fraction = std::make_shared<CustAttr<double>>(2.5);
    Log const all{"judge?", "told"};
    struct {
        char const* what;
        std::shared_ptr<Attribute> cached;
        bool isBlocked;
        Change change;
        int value;
        bool isStillStaged;
        Log log;
    } const rows[] = {
        {"touched", seven, false, touch, 7, false, {"told"}},
        {"touched, blocked", seven, true, touch, 7, false, {}},
        {"touched, of another type", fraction, false, touch, 1, false, {"told"}},
        {"touched, without attribute", nullptr, false, touch, 1, true, {"told"}},
        {"set", seven, false, [](auto& a) { a.setValue(3); }, 3, false, all},
        {"set to the staged value", seven, false, [](auto& a) { a.setValue(a.getValue()); }, 7, false, all},
        {"set, without attribute", nullptr, false, [](auto& a) { a.setValue(a.getValue()); }, 1, false, all},
        {"refused", seven, false, setNine, 1, true, {"judge?"}},
        {"set, blocked", seven, true, setNine, 9, false, {}},
        {"text", seven, false, [](auto& a) { assignText(a, "4"); }, 4, false, all},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.what);
        Watched watched;
        watched.refuseNine();
        stage(*watched.attribute, row.cached);
        Attribute::setObservingBlocked(row.isBlocked);
        row.change(*watched.attribute);
        Attribute::setObservingBlocked(false);
        EXPECT_EQ(watched.attribute->lookupNotifyInfo(typeid(CachedAttributeInfo)) != nullptr,
                  row.isStillStaged);
        EXPECT_EQ(Attribute::isCachedAttributePending(), row.isStillStaged);
        Attribute::setIsCachedAttributePending(false);
        EXPECT_EQ(watched.value(), row.value);
        EXPECT_EQ(watched.log, row.log);
    }
}

TEST(CachedAttributeInfo, AssignmentTakesAttributeAndExpiry) {
    auto const cached = std::make_shared<CustAttr<int>>(1);
    CachedAttributeInfo first(cached), second(nullptr), third(nullptr);
    EXPECT_FALSE(first.willExpire());
    first.setExpire(true);
    second = first;
    third = std::move(first);
    EXPECT_TRUE(second.willExpire() && third.willExpire());
    EXPECT_EQ(first.getCachedAttribute(), nullptr);
    EXPECT_TRUE(second.getCachedAttribute() == cached && third.getCachedAttribute() == cached);
}

} // namespace
