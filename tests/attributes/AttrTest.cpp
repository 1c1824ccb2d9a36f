// SPDX-License-Identifier: MIT
#include "attributes/AttributeFixture.h"

#include <limits>
#include <set>

namespace Zorvan::AttributeContainer::Testing {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

using P2 = SVec2d<double>;
using P3 = Vec3d<double>;
using Polygons = std::vector<std::vector<P3>>;

/// A value with one component that is not 0.
template <class T, class Component>
T with(std::size_t index, Component component) {
    T value;
    value[index] = component;
    return value;
}

/// Calls `check(type, class name, value, text form)` for each of the 48 attribute types. The value differs
/// from the initial one and has an exact text form.
template <class Check>
void forEachAttributeType(Check const& check) {
    using std::vector;
    using Map = std::map<std::string, std::string>;
    std::string const id = "00000000-0000-0000-0000-0000000000";
    std::string const matrix = "0, 0.5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0";

    check(AttrTypeInt, "int", -5, "-5");
    check(AttrTypeInt8, "int8_t", static_cast<signed char>(65), "A");
    check(AttrTypeUInt8, "uint8_t", static_cast<unsigned char>(200), "\xc8");
    check(AttrTypeInt16, "int16_t", static_cast<short>(-32768), "-32768");
    check(AttrTypeUInt16, "uint16_t", static_cast<unsigned short>(65535), "65535");
    check(AttrTypeUInt32, "uint32_t", 4294967295u, "4294967295");
    check(AttrTypeInt64, "int64_t", std::numeric_limits<std::int64_t>::min(), "-9223372036854775808");
    check(AttrTypeUInt64, "uint64_t", ~std::uint64_t{0}, "18446744073709551615");
    check(AttrTypeDouble, "double", 2.5, "2.5");
    check(AttrTypeString, "String", std::string("it's \"a\\b\" <&> {1}"), "it's \"a\\b\" <&> {1}");
    check(AttrTypeBool, "bool", true, "true");
    check(AttrTypeVec3dd, "Vec3dd", P3(0.5, 1, 1e-7), "0.5 1 1e-07 ");
    check(AttrTypeVec3df, "Vec3df", Vec3d<float>(1, -2, 0.25f), "1 -2 0.25 ");
    check(AttrTypeSVec3us, "SVec3us", SVec3d<unsigned short>(1, 2, 65535), "1 2 65535 ");
    check(AttrTypeVec4dd, "Vec4dd", Vec4d<double>(1, 2, 3, -4.5), "1 2 3 -4.5 ");
    check(AttrTypeVec4df, "Vec4df", Vec4d<float>(0, 0, 0, 1e20f), "0 0 0 1e+20 ");
    check(AttrTypeSVec2dd, "SVec2dd", P2(0, -1), "0 -1 ");
    check(AttrTypeSVec2df, "SVec2df", SVec2d<float>(1.5f, 2), "1.5 2 ");
    check(AttrTypeSVec2i, "SVec2i", SVec2d<int>(-1, 7), "-1 7 ");
    check(AttrTypeSVec2ui, "SVec2ui", SVec2d<unsigned int>(0, 4294967295u), "0 4294967295 ");
    check(AttrTypeStringArray, "StringArray", vector<std::string>{"one", "two"}, "{ one two } ");
    check(AttrTypeStringSet, "StringSet", std::set<std::string>{"b", "a"}, "{ a b } ");
    check(AttrTypeStringMap, "StringMap", Map{{"b", "y"}, {"a", "x"}}, "{ \"a\"=>\"x\" \"b\"=>\"y\" } ");
    check(AttrTypeMat4df, "Mat4df", with<Mat4d<float>>(1, 0.5f), matrix);
    check(AttrTypeMat4dd, "Mat4dd", with<Mat4d<double>>(1, 0.5), matrix);
    check(AttrTypeDVector, "DVector", vector<double>{0, -0.5}, "{ 0 -0.5 } ");
    check(AttrTypeVec3ddVector, "Vec3ddVector", vector<P3>{{1, 2, 3}, {}}, "{ 1 2 3  0 0 0  } ");
    check(AttrTypeVec3dfVector, "Vec3dfVector", vector<Vec3d<float>>{{1, 2, 3}}, "{ 1 2 3  } ");
    check(AttrTypeVec4ddVector, "Vec4ddVector", vector<Vec4d<double>>{{1, 2, 3, 4}}, "{ 1 2 3 4  } ");
    check(AttrTypeVecPoly3d, "VecPoly3d", Polygons{{{1, 2, 3}}, {}}, "{ { 1 2 3  }  { }  } ");
    check(AttrTypeVec2ddVector, "Vec2ddVector", vector<P2>{{1, 2}}, "{ 1 2  } ");
    check(AttrTypeVec2dfVector, "Vec2dfVector", vector<SVec2d<float>>{{1, 2}}, "{ 1 2  } ");
    check(AttrTypeIntVector, "IntVector", vector<int>{1, -2}, "{ 1 -2 } ");
    check(AttrTypeInt8Vector, "Int8Vector", vector<signed char>{65, 66}, "{ A B } ");
    check(AttrTypeUInt8Vector, "UInt8Vector", vector<unsigned char>{67}, "{ C } ");
    check(AttrTypeInt16Vector, "Int16Vector", vector<short>{-1, 0}, "{ -1 0 } ");
    check(AttrTypeUInt16Vector, "UInt16Vector", vector<unsigned short>{65535}, "{ 65535 } ");
    check(AttrTypeUInt32Vector, "UInt32Vector", vector<unsigned int>{0}, "{ 0 } ");
    check(AttrTypeInt64Vector, "Int64Vector", vector<std::int64_t>{-1}, "{ -1 } ");
    check(AttrTypeUInt64Vector, "UInt64Vector", vector<std::uint64_t>{1, 2}, "{ 1 2 } ");
    check(AttrTypeVec2iVector, "Vec2iVector", vector<SVec2d<int>>{{-1, -1}}, "{ -1 -1  } ");
    check(AttrTypeVec2usVector, "Vec2usVector", vector<SVec2d<unsigned short>>{{1, 2}}, "{ 1 2  } ");
    check(AttrTypeMat4ddVector, "Mat4ddVector", vector{with<Mat4d<double>>(1, 0.5)}, "{ " + matrix + " } ");
    check(AttrTypeUuid, "Uuid", with<uuids::uuid>(15, 0x0f), id + "0f");
    check(AttrTypeVec3uiVector, "Vec3uiVector", vector<SVec3d<unsigned int>>{{1, 2, 3}}, "{ 1 2 3  } ");
    std::set const ids{with<uuids::uuid>(15, 2), with<uuids::uuid>(15, 1)};
    check(AttrTypeUuidSet, "UuidSet", ids, "{ " + id + "01 " + id + "02 } ");
    check(AttrTypeUuidVector, "UuidVector", vector{with<uuids::uuid>(15, 2)}, "{ " + id + "02 } ");
    check(AttrTypeBoolVector, "BoolVector", vector<bool>{true, false}, "{ true false } ");
}

template <class T>
bool isLeftOut(T const& value) {
    std::ostringstream out;
    EXPECT_EQ(CustAttr<T>(value).writeTo(out, std::make_shared<WriteContextBase>()), nullptr);
    return out.str().empty();
}

TEST(Attr, EveryTypeIsMadeComparedCopiedShownAndStored) {
    int numTypes = 0;
    forEachAttributeType([&](AttrType type, std::string const& name, auto const& value,
                             std::string const& text) {
        using T = std::decay_t<decltype(value)>;
        SCOPED_TRACE(name);
        ++numTypes;
        AttrDefinition const definition{0, "x", type};
        auto const made = std::dynamic_pointer_cast<Attr<T>>(definition.createAttr(CreateType::Deep, {}, {}));
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->getClassName(), "Attr<" + name + ">");
        EXPECT_EQ(AttrContainer::getTypeFromString(made->getClassName()), type);
        CustAttr<T> const initial;
        EXPECT_TRUE(made->isEqual(initial) && made->getValue() == T());
        made->setValue(value);
        EXPECT_EQ(made->getValue(), value);
        EXPECT_EQ(made->getValueAsText(), text);
        EXPECT_TRUE(made->isDifferent(initial));
        auto const copy = made->duplicate(CreateType::Deep, std::nullopt);
        EXPECT_TRUE(std::dynamic_pointer_cast<CustAttr<T>>(copy) && copy->isEqual(*made));
        EXPECT_TRUE(made->duplicate(CreateType::Blank, std::nullopt)->isEqual(initial));
        EXPECT_FALSE(CustAttr<ScanPtColor<Vec3d<float>>>().isEqual(*made));
        CustAttr<std::string> shown;
        static_cast<Attribute&>(shown) = *made;
        EXPECT_EQ(shown.getValue(), text);

        EXPECT_TRUE(isLeftOut(T()) && !isLeftOut(value));
        for (auto const format : {ModelFormat::Text, ModelFormat::XmlV2}) {
            auto const source = AttrContainer::create(), target = AttrContainer::create();
            auto const existing = std::make_shared<CustAttr<T>>(value);
            source->addAttribute(copy, "x");
            source->addAttribute(std::make_shared<CustAttr<T>>(), "y");
            target->addAttribute(existing, "y");
            std::stringstream document;
            EXPECT_EQ(source->writeTo(document, std::make_shared<WriteContextBase>(format)), nullptr);
            auto context = std::make_shared<ReadContextBase>();
            context->setFormat(format);
            EXPECT_EQ(target->readFrom(document, context), nullptr) << document.str();
            auto const read = target->getAttr("x").lock();
            EXPECT_TRUE(read && read->isEqual(*made)) << document.str();
            EXPECT_EQ(existing->getValue(), T()) << "a block without a value sets the initial one";
        }
    });
    EXPECT_EQ(numTypes, 48);
}

TEST(Attr, NumbersAreEqualWhenNeitherIsLess) {
    auto const isEqual = []<class T>(T const& a, T const& b) {
        return CustAttr<T>(a).isEqual(CustAttr<T>(b));
    };
    using Numbers = std::vector<double>;
    ScanPtColor<Vec3d<float>> const scanned({1, 2, 3}, {9, 9, 9, 9});
    ScanPtColor<Vec3d<float>> const lost({1, static_cast<float>(nan), 3}, {9, 9, 9, 9});
    EXPECT_TRUE(isEqual(nan, 1.0) && !isEqual(1.0, 2.0));
    EXPECT_TRUE(isEqual(P3(1, nan, 3), P3(1, 2, 3)) && !isEqual(P3(1, nan, 3), P3(1, 2, 4)));
    EXPECT_TRUE(isEqual(Numbers{nan}, Numbers{7}) && !isEqual(Numbers{nan}, Numbers{7, 7}));
    EXPECT_TRUE(isEqual(Polygons{{{nan, 1, 1}}}, Polygons{{{0, 1, 1}}}));
    EXPECT_FALSE(isEqual(Polygons{{{nan, 1, 1}}}, Polygons{{{0, 1, 1}, {}}}));
    EXPECT_TRUE(isEqual(scanned, lost) && isEqual(std::vector{scanned}, std::vector{lost}));
    EXPECT_FALSE(isEqual(std::vector{scanned}, std::vector{ScanPtColor<Vec3d<float>>()}));
}

TEST(Attr, ValuesThatPrintAsTheInitialOneAreLeftOut) {
    EXPECT_TRUE(isLeftOut(nan) && isLeftOut(-infinity) && isLeftOut(P3(0, infinity, nan)));
    EXPECT_FALSE(isLeftOut(std::vector<double>{nan}) || isLeftOut(P3(nan, 0, 1)));
    EXPECT_FALSE(isLeftOut(ScanPtColor<Vec3d<float>>({0, 0, 0}, {0, 0, 0, 1})));
}

TEST(Attr, ATextThatDoesNotParseGivesTheInitialValue) {
    CustAttr<std::vector<int>> list(std::vector<int>{1});
    assignText(list, "no list");
    EXPECT_EQ(list.getValue(), std::vector<int>());
}

} // namespace

} // namespace Zorvan::AttributeContainer::Testing
