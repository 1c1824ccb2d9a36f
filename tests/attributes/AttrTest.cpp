// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "attributes/AttributeFixture.h"
#include "serialization/ReaderFixture.h"

#include <AttributeContainer/DataInFormat.h>

#include <limits>
#include <set>

namespace Zorvan::AttributeContainer::Testing {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

using P2 = SVec2d<double>;
using P3 = Vec3d<double>;
using Polygons = std::vector<std::vector<P3>>;

template <class T>
bool isLeftOut(T const& value) {
    std::ostringstream out;
    EXPECT_EQ(CustAttr<T>(value).writeTo(out, std::make_shared<WriteContextBase>()), nullptr);
    return out.str().empty();
}

using Check = void (*)(DataRow const&, AttrDefinition const&);

/// Makes, compares, copies, shows and stores the value of a row.
template <class T>
void check(DataRow const& row, AttrDefinition const& definition) {
    std::istringstream text(row[2]);
    T const value = DataInFormat<T>(text, ModelFormat::Text).take();
    auto const made = std::dynamic_pointer_cast<Attr<T>>(definition.createAttr(CreateType::Deep, {}, {}));
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->getClassName(), "Attr<" + row[1] + ">");
    EXPECT_EQ(AttrContainer::getTypeFromString(made->getClassName()), definition.type);
    CustAttr<T> const initial;
    EXPECT_TRUE(made->isEqual(initial) && made->getValue() == T());
    made->setValue(value);
    EXPECT_EQ(made->getValue(), value);
    EXPECT_EQ(made->getValueAsText(), row[3]);
    EXPECT_TRUE(made->isDifferent(initial));
    auto const copy = made->duplicate(CreateType::Deep, std::nullopt);
    EXPECT_TRUE(std::dynamic_pointer_cast<CustAttr<T>>(copy) && copy->isEqual(*made));
    EXPECT_TRUE(made->duplicate(CreateType::Blank, std::nullopt)->isEqual(initial));
    EXPECT_FALSE(CustAttr<ScanPtColor<Vec3d<float>>>().isEqual(*made));
    CustAttr<std::string> shown;
    static_cast<Attribute&>(shown) = *made;
    EXPECT_EQ(shown.getValue(), row[3]);

    EXPECT_TRUE(isLeftOut(T()) && !isLeftOut(value));
    for (auto const format : {ModelFormat::Text, ModelFormat::XmlV2}) {
        auto const source = AttrContainer::create(), target = AttrContainer::create();
        auto const existing = std::make_shared<CustAttr<T>>(value);
        source->addAttribute(copy, "x");
        source->addAttribute(std::make_shared<CustAttr<T>>(), "y");
        target->addAttribute(existing, "y");
        std::stringstream document;
        EXPECT_EQ(source->writeTo(document, std::make_shared<WriteContextBase>(format)), nullptr);
        EXPECT_EQ(target->readFrom(document, readContext(format)), nullptr) << document.str();
        auto const read = target->getAttr("x").lock();
        EXPECT_TRUE(read && read->isEqual(*made)) << document.str();
        EXPECT_EQ(existing->getValue(), T()) << "a block without a value sets the initial one";
    }
}

template <class... T>
std::map<std::string, Check> checksOf() {
    return {{CustAttr<T>().getClassName(), check<T>}...};
}

template <class... Component>
std::map<std::string, Check> checksOfLists() {
    return checksOf<std::vector<Component>...>();
}

TEST(Attr, EveryTypeIsMadeComparedCopiedShownAndStored) {
    using Byte = unsigned char;
    using Short = unsigned short;
    using F3 = Vec3d<float>;
    using Strings = std::vector<std::string>;
    auto checks = checksOf<int, signed char, Byte, short, Short, unsigned, std::int64_t, std::uint64_t,
                           double, std::string, bool, P3, F3, SVec3d<Short>, Vec4d<double>, Vec4d<float>, P2,
                           SVec2d<float>, SVec2d<int>, SVec2d<unsigned>, Strings, std::set<std::string>,
                           std::map<std::string, std::string>, Mat4d<float>, Mat4d<double>, Polygons,
                           uuids::uuid, std::set<uuids::uuid>>();
    checks.merge(checksOfLists<double, P3, F3, Vec4d<double>, P2, SVec2d<float>, int, signed char, Byte,
                               short, Short, unsigned, std::int64_t, std::uint64_t, SVec2d<int>,
                               SVec2d<Short>, Mat4d<double>, SVec3d<unsigned>, uuids::uuid, bool>());
    EXPECT_EQ(checks.size(), 48u);
    for (auto const& row : dataRows("attributes/types.txt")) {
        SCOPED_TRACE(row.place);
        AttrDefinition const definition{0, "x", static_cast<AttrType>(row.number(0))};
        std::string const className = row[1].empty() ? "none" : "Attr<" + row[1] + ">";
        auto const made = definition.createAttr(CreateType::Deep, {}, {});
        EXPECT_EQ(made ? made->getClassName() : "none", className);
        if (!row[2].empty()) {
            checks.at(className)(row, definition);
            checks.erase(className);
        }
    }
    EXPECT_TRUE(checks.empty());
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

} // namespace

} // namespace Zorvan::AttributeContainer::Testing
