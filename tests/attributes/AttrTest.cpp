// SPDX-License-Identifier: MIT
#include "attributes/AttributeTypes.h"

#include <AttributeContainer/ReadContextBase.h>
#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <sstream>
#include <type_traits>

using namespace Zorvan;
using namespace Zorvan::AttributeContainer;
using namespace Zorvan::AttributeContainer::Testing;

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

std::string written(Attribute& attribute, int format, bool withDefaults = false) {
    auto context = std::make_shared<WriteContextBase>(format);
    context->setWriteDefaultValues(withDefaults);
    std::ostringstream out;
    EXPECT_EQ(attribute.writeTo(out, context), nullptr);
    return out.str();
}

TEST(Attr, EveryTypeIsMadeComparedCopiedAndShown) {
    int numTypes = 0;
    forEachAttributeType([&](AttrType type, char const* name, auto const& value, std::string const& text) {
        using T = std::decay_t<decltype(value)>;
        SCOPED_TRACE(name);
        ++numTypes;
        auto const made = AttrDefinition{0, "x", type}.createAttr(CreateType::Deep, {}, {});
        auto const attribute = std::dynamic_pointer_cast<Attr<T>>(made);
        ASSERT_NE(attribute, nullptr);
        EXPECT_EQ(made->getClassName(), name);
        EXPECT_EQ(Attr<T>::getStaticClassName(), name);
        EXPECT_EQ(AttrContainer::getTypeFromString(name), type);
        EXPECT_EQ(attribute->getValue(), T());

        CustAttr<T> const initial;
        EXPECT_TRUE(made->isEqual(initial));
        attribute->setValue(value);
        EXPECT_EQ(attribute->getValue(), value);
        EXPECT_EQ(made->getValueAsText(), text);
        EXPECT_TRUE(made->isDifferent(initial));

        auto const copy = made->duplicate(CreateType::Deep, std::nullopt);
        EXPECT_NE(std::dynamic_pointer_cast<CustAttr<T>>(copy), nullptr);
        EXPECT_TRUE(copy->isEqual(*made));
        EXPECT_TRUE(made->duplicate(CreateType::Blank, std::nullopt)->isEqual(initial));
        CustAttr<T> assigned;
        static_cast<Attribute&>(assigned) = *made;
        EXPECT_TRUE(assigned.isEqual(*made));
        EXPECT_FALSE(CustAttr<ScanPtColor<Vec3d<float>>>().isEqual(*made));

        // A string takes every text. What the document's reader does not understand of a text form is lost.
        CustAttr<std::string> shown;
        static_cast<Attribute&>(shown) = *made;
        EXPECT_EQ(shown.getValue(), text);
        bool const isReadable = type != AttrTypeInt8 && type != AttrTypeUInt8 && type != AttrTypeStringMap &&
                                type != AttrTypeMat4df && type != AttrTypeMat4dd &&
                                type != AttrTypeInt8Vector && type != AttrTypeUInt8Vector &&
                                type != AttrTypeMat4ddVector;
        attribute->assignFrom(text, nullptr, nullptr, nullptr);
        EXPECT_EQ(attribute->isEqual(*copy), isReadable);
    });
    EXPECT_EQ(numTypes, 48);
}

TEST(Attr, EveryTypeComesBackFromADocument) {
    forEachAttributeType([&](AttrType, char const* name, auto const& value, std::string const&) {
        using T = std::decay_t<decltype(value)>;
        for (int const format : {ModelFormat::Text, ModelFormat::XmlV2}) {
            SCOPED_TRACE(name + std::to_string(format));
            auto const source = AttrContainer::create();
            auto const original = std::make_shared<CustAttr<T>>(value);
            source->addAttribute(original, "x");
            source->addAttribute(std::make_shared<CustAttr<T>>(), "y");
            std::stringstream document;
            EXPECT_EQ(source->writeTo(document, std::make_shared<WriteContextBase>(format)), nullptr);
            auto context = std::make_shared<ReadContextBase>();
            context->setFormat(format);
            auto const target = AttrContainer::create();
            auto const existing = std::make_shared<CustAttr<T>>(value);
            target->addAttribute(existing, "y");
            EXPECT_EQ(target->readFrom(document, context), nullptr) << document.str();
            auto const read = target->getAttr("x").lock();
            ASSERT_NE(read, nullptr);
            EXPECT_TRUE(read->isEqual(*original)) << read->getValueAsText();
            EXPECT_EQ(existing->getValue(), T()) << "a block without a value sets the initial one";
        }
        CustAttr<T> initial;
        CustAttr<T> changed(value);
        EXPECT_EQ(written(initial, ModelFormat::Text), "");
        EXPECT_EQ(written(initial, ModelFormat::Text, true).find("\nValue "), 0u);
        EXPECT_EQ(written(changed, ModelFormat::Text).find("\nValue "), 0u);
        EXPECT_NE(written(initial, ModelFormat::Xml), written(changed, ModelFormat::Xml));
    });
}

TEST(Attr, NumbersAreEqualWhenNeitherIsLess) {
    auto const isEqual = [](auto const& a, auto const& b) {
        using T = std::decay_t<decltype(a)>;
        return CustAttr<T>(a).isEqual(CustAttr<T>(b));
    };
    using Points = std::vector<Vec3d<double>>;
    ScanPtColor<Vec3d<float>> const scanned({1, 2, 3}, {9, 9, 9, 9});
    ScanPtColor<Vec3d<float>> const lost({1, static_cast<float>(nan), 3}, {9, 9, 9, 9});
    EXPECT_TRUE(isEqual(nan, 1.0));
    EXPECT_FALSE(isEqual(1.0, 2.0));
    EXPECT_TRUE(isEqual(Vec3d<double>(1, nan, 3), Vec3d<double>(1, 2, 3)));
    EXPECT_FALSE(isEqual(Vec3d<double>(1, nan, 3), Vec3d<double>(1, 2, 4)));
    EXPECT_TRUE(isEqual(std::vector<double>{nan}, std::vector<double>{7}));
    EXPECT_FALSE(isEqual(std::vector<double>{nan}, std::vector<double>{7, 7}));
    EXPECT_TRUE(isEqual(std::vector<Points>{{{nan, 1, 1}}}, std::vector<Points>{{{0, 1, 1}}}));
    EXPECT_FALSE(isEqual(std::vector<Points>{{{nan, 1, 1}}}, std::vector<Points>{{{0, 1, 1}, {}}}));
    EXPECT_TRUE(isEqual(scanned, lost) && isEqual(std::vector{scanned}, std::vector{lost}));
    EXPECT_FALSE(isEqual(std::vector{scanned}, std::vector{ScanPtColor<Vec3d<float>>()}));
    EXPECT_FALSE(CustAttr<int>(1).isEqual(CustAttr<unsigned int>(1)));
}

TEST(Attr, ValuesThatPrintAsTheInitialOneAreLeftOut) {
    auto const isLeftOut = [](auto const& value) {
        CustAttr<std::decay_t<decltype(value)>> attribute(value);
        return written(attribute, ModelFormat::Text).empty();
    };
    float const lost = static_cast<float>(infinity);
    EXPECT_TRUE(isLeftOut(nan) && isLeftOut(-infinity) && isLeftOut(Vec3d<double>(0, infinity, nan)));
    EXPECT_TRUE(isLeftOut(ScanPtColor<Vec3d<float>>({lost, 0, 0}, {0, 0, 0, 0})));
    EXPECT_FALSE(isLeftOut(std::vector<double>{nan}) || isLeftOut(Vec3d<double>(nan, 0, 1)));
    EXPECT_FALSE(isLeftOut(ScanPtColor<Vec3d<float>>({0, 0, 0}, {0, 0, 0, 1})));
}

TEST(Attr, OtherTypesAreTakenThroughTheirText) {
    CustAttr<double> fraction;
    static_cast<Attribute&>(fraction) = CustAttr<int>(42);
    EXPECT_EQ(fraction.getValue(), 42.0);
    CustAttr<int> whole;
    static_cast<Attribute&>(whole) = CustAttr<double>(2.5);
    EXPECT_EQ(whole.getValue(), 2);
    CustAttr<std::vector<int>> list(std::vector<int>{1});
    list.assignFrom("no list", nullptr, nullptr, nullptr);
    EXPECT_EQ(list.getValue(), std::vector<int>());
}

} // namespace
