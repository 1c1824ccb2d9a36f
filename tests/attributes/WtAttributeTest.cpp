// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"

#include <AttributeContainer/Object.h>
#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/WriteContextBase.h>

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

/// An attribute that provides only what it must.
class Bare : public Attribute {
public:
    Bare() : Attribute(std::nullopt) {}
    std::string getName() override { return "bare"; }
    std::optional<std::reference_wrapper<AttrContainer const>> getLocation() override { return std::nullopt; }
    AttrDefinition const* getDefinition() const override { return nullptr; }
    std::uint64_t getToken() override { return 3; }
    Attribute& operator=(Attribute const&) override { return *this; }
    std::shared_ptr<Attribute>
    duplicate(CreateType, std::optional<std::reference_wrapper<AttrContainer const>>) override {
        return std::make_shared<Bare>();
    }
    bool isEqual(Attribute const& other) const override { return this == &other; }

    using Attribute::getAttributeTempFlags;
    using Attribute::isAnyTempFlagSet;
    using Attribute::keyTable;
    using Attribute::setAttributeTempFlags;
};

Result read(Attribute& attribute, std::string const& text) {
    std::istringstream in(text);
    return attribute.readFrom(in, std::make_shared<ReadContextBase>());
}

TEST(Attribute, TheBaseHasNoValue) {
    auto const bare = std::make_shared<Bare>();
    EXPECT_EQ(bare->getClassName(), "Attribute");
    EXPECT_EQ(bare->getValueAsText(), "(NULL)");
    EXPECT_TRUE(bare->isDifferent(Bare()));
    Awaited pre, post;
    bare->assignFrom("ignored", nullptr, pre.promise(), post.promise());
    EXPECT_EQ(pre.outcome() + post.outcome(), "00");
    EXPECT_EQ(read(*bare, "Value 5\nWrite 1\n}")->getCode(), UnknownContent) << "the 5 is nobody's value";
    EXPECT_EQ(bare->getFlags().write, 1);
    for (auto const& [token, name] : {std::pair{1, "Name"}, {3, "Value"}, {4, "Write"}, {5, ""}})
        EXPECT_EQ(Bare::keyTable.getToken(name), static_cast<std::uint64_t>(token));
}

TEST(Attribute, SwitchesBelongToOneThreadAndLeaveEachOtherAlone) {
    EXPECT_FALSE(Bare::isAnyTempFlagSet());
    Attribute::setObservingBlocked(true);
    EXPECT_EQ(Bare::getAttributeTempFlags(), 2);
    EXPECT_FALSE(Attribute::isCachedAttributePending());
    Attribute::setIsCachedAttributePending(true);
    EXPECT_EQ(Bare::getAttributeTempFlags(), 3);
    Attribute::setObservingBlocked(false);
    EXPECT_EQ(Bare::getAttributeTempFlags(), 1);
    int elsewhere = -1;
    std::thread([&] { elsewhere = Bare::getAttributeTempFlags(); }).join();
    EXPECT_EQ(elsewhere, 0);
    Bare::setAttributeTempFlags(0);
    EXPECT_FALSE(Attribute::isCachedAttributePending());
}

TEST(Attribute, PathsLeadThroughTheContainer) {
    auto const root = Object::create();
    auto const child = Object::create();
    auto const leaf = AttrContainer::create();
    auto const attribute = std::make_shared<CustAttr<int>>();
    root->addChild(child, 0);
    child->addField(leaf, "leaf", 0);
    child->addAttribute(attribute, "x");
    Attribute const& constant = *attribute;
    EXPECT_EQ(constant.inqObjPath(), child->inqObjPath().value() + "/x");
    EXPECT_EQ(&constant.lookupObject()->get(), static_cast<Observer const*>(child.get()));
    EXPECT_EQ(attribute->inqObserver("").lock(), attribute);
    EXPECT_EQ(attribute->inqObserver(std::nullopt).lock(), attribute);
    EXPECT_EQ(constant.inqObserver("leaf").lock(), leaf);
    EXPECT_TRUE(attribute->inqObserver("nobody").expired());
    EXPECT_TRUE(CustAttr<int>().inqObserver("leaf").expired());
    // A container without a path, or with one that ends in a slash, gives the bare name.
    EXPECT_FALSE(AttrContainer::create()->inqObjPath());
    auto const plain = AttrContainer::create();
    EXPECT_EQ(plain->Attr_name().inqObjPath(), "Name");
}

TEST(Attribute, ThePropagationObserverIsMadeOnce) {
    auto attribute = std::make_shared<CustAttr<int>>();
    auto const observer = attribute->getObserver();
    EXPECT_EQ(attribute->getObserver().lock(), observer.lock());
    EXPECT_EQ(std::as_const(*observer.lock()).getName(), "AttributePropagationObserver");
    attribute.reset();
    EXPECT_TRUE(observer.expired());
    CustAttr<int> alone;
    EXPECT_THROW(static_cast<void>(alone.getObserver()), std::bad_weak_ptr);
}

TEST(Attribute, ABlockIsReadToItsEnd) {
    CustAttr<int> attribute;
    EXPECT_EQ(read(attribute, "Name \"other\"\nValue 5\nWrite 1\n}"), nullptr);
    EXPECT_EQ(attribute.getValue(), 5);
    EXPECT_EQ(attribute.getFlags().write, 1);
    auto const context = std::make_shared<WriteContextBase>();
    std::ostringstream out;
    EXPECT_EQ(attribute.writeTo(out, context), nullptr);
    EXPECT_EQ(out.str(), "\nValue 5\nWrite 1");
    std::ostringstream xml;
    EXPECT_EQ(attribute.writeTo(xml, std::make_shared<WriteContextBase>(ModelFormat::Xml)), nullptr);
    EXPECT_EQ(xml.str(), "5");

    std::string const link = "\nPostObserver\nObserverPath {\nPriority 5\nPath \"/o\"\nAction \"Strange\"\n}";
    struct {
        std::string text;
        int code; ///< -1: none
        int value;
    } const rows[] = {
        {"}", -1, 1},
        {"Value 6 }", -1, 6},
        {"Odd { Value 7 }\nValue 8\n}", UnknownContent, 8},
        {"Odd \"Value 7\nValue 8\n}\"\nValue 9\n}", UnknownContent, 9},
        {link + "\nValue 10\n}", ObserverUnresolved, 10},
        {"Value 11" + link + "\n}", ObserverUnresolved, 11},
        {"Value word\n}", StreamFailure, 1},
        {"Value 12\nWrite word\n}", StreamFailure, 12},
        {"Value 13\n", -1, 13}, // It stands alone: there is no block that would have to end.
    };
    for (auto const& row : rows) {
        CustAttr<int> target(1);
        Result const result = read(target, row.text);
        EXPECT_EQ(result ? static_cast<int>(result->getCode()) : -1, row.code) << row.text;
        EXPECT_EQ(target.getValue(), row.value) << row.text;
    }
}

TEST(Attribute, AValueFromADocumentIsStoredUnaskedAndTold) {
    Watched watched;
    watched.refuseNine();
    EXPECT_EQ(read(*watched.attribute, "Value 9\n}"), nullptr);
    EXPECT_EQ(watched.attribute->getValue(), 9);
    EXPECT_EQ(watched.log, Log{"told"});
}

TEST(Attribute, ReadersAndWritersJudgeBeforeTheyTouchAnything) {
    CustAttr<int> attribute(5);
    std::istringstream in("Value 6\n}");
    EXPECT_EQ(attribute.readFrom(in, nullptr)->getCode(), NoContext);
    EXPECT_EQ(in.tellg(), 0);
    std::ostringstream out;
    EXPECT_EQ(attribute.writeTo(out, nullptr)->getCode(), NoContext);
    auto const context = std::make_shared<WriteContextBase>();
    context->setWriteOnlyMarked(true);
    Result const unmarked = attribute.writeTo(out, context);
    EXPECT_EQ(unmarked->getCode(), NotMarked);
    EXPECT_EQ(unmarked->getLine(), 270);
    EXPECT_EQ(out.str(), "");
    attribute.setMarked(true);
    EXPECT_EQ(attribute.writeTo(out, context), nullptr);
    EXPECT_EQ(out.str(), "\nValue 5");
    out.setstate(std::ios_base::badbit);
    Result const failed = attribute.writeTo(out, context);
    EXPECT_EQ(failed->getCode(), StreamFailure);
    EXPECT_EQ(failed->getLine(), 829);
}

} // namespace
