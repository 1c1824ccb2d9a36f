// SPDX-License-Identifier: MIT
#include "platform/Guid.h"

#include <AttributeContainer/AttrType.h>
#include <AttributeContainer/Statistics.h>
#include <AttributeContainer/Uuid.h>
#include <AttributeContainer/ValueTypes.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <type_traits>
#include <utility>

using namespace Zorvan;
using uuids::uuid;

namespace {

template <class T, std::size_t Size>
constexpr bool isPlainOfSize = std::is_trivially_copyable_v<T>&& std::is_standard_layout_v<T> &&
                               sizeof(T) == Size;

static_assert(isPlainOfSize<Vec3d<double>, 24> && isPlainOfSize<Vec4d<unsigned char>, 4>);
static_assert(isPlainOfSize<SVec2d<unsigned short>, 4> && isPlainOfSize<SVec3d<int>, 12>);
static_assert(isPlainOfSize<Mat4d<float>, 64> && isPlainOfSize<uuid, 16>);
static_assert(isPlainOfSize<ScanPtColor<Vec3d<float>>, 18>);
static_assert(isPlainOfSize<StatisticVal<double>, 32> && isPlainOfSize<StatisticValLimits<double>, 96>);
static_assert(!std::equality_comparable_with<Vec3d<int>, SVec3d<int>>);
static_assert(AttributeContainer::AttrTypeVecPoly3d == 30 && AttributeContainer::AttrTypeUnknown == 54);

TEST(ValueTypes, ComponentsStandInTheOrderGiven) {
    Vec4d<float> vector(1, 2, 3, 4);
    EXPECT_TRUE(std::ranges::equal(vector, std::array{1.0f, 2.0f, 3.0f, 4.0f}));
    vector.w() = vector[1];
    EXPECT_EQ(vector, Vec4d<float>(1, 2, 3, 2));
    EXPECT_NE(vector, Vec4d<float>(1, 2, 3, 4));
    EXPECT_EQ(SVec2d<int>(), SVec2d<int>(0, 0));

    Mat4d<double> const matrix(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
    for (std::size_t i = 0; i < matrix.size(); ++i)
        EXPECT_EQ(matrix[i], static_cast<double>(i));
}

TEST(ValueTypes, ScanPointKeepsPointAndColor) {
    ScanPtColor<Vec3d<float>> point({1.5f, -2, 3}, {1, 2, 3, 4});
    EXPECT_EQ(point.getPoint(), Vec3d<float>(1.5f, -2, 3));
    EXPECT_EQ(point.getColor()[3], 4);
    EXPECT_EQ(point.getReserved(), 0);
    auto const before = point;
    point.setPoint({0, -2, 3});
    EXPECT_NE(point, before);
    point.setPoint({1.5f, -2, 3});
    EXPECT_EQ(point, before);
    point.setColor({1, 2, 3, 5});
    EXPECT_NE(point, before);
}

TEST(Uuid, TextIsReadByItsDigits) {
    std::string const canonical = "01234567-89ab-cdef-0123-456789abcdef";
    struct {
        char const* text;
        bool isGood;
    } const rows[] = {
        {"01234567-89ab-cdef-0123-456789abcdef", true},
        {"{01234567-89AB-CDEF-0123-456789ABCDEF}", true},
        {"0123456789abcdef0123456789abcdef", true},
        {"-0-123456789abcdef0123456789abcd--ef-", true},
        {"{0123456789abcdef0123456789abcdef", false},
        {"0123456789abcdef0123456789abcdef}", false},
        {"{{0123456789abcdef0123456789abcdef}}", false},
        {"0123456789abcdef0123456789abcde", false},
        {"0123456789abcdef0123456789abcdef0", false},
        {"0123456789abcdef0123456789abcdef01", false},
        {"0123456789abcdef0123456789abcdeg", false},
        {" 0123456789abcdef0123456789abcdef", false},
        {"", false},
        {"{", false},
        {"{}", false},
    };
    for (auto const& row : rows) {
        auto const parsed = uuid::fromString(row.text);
        EXPECT_EQ(parsed.has_value(), row.isGood) << row.text;
        EXPECT_EQ(parsed ? parsed->toString() : canonical, canonical) << row.text;
    }
}

TEST(Uuid, OrderIsThatOfUnsignedBytes) {
    uuid low, high;
    low[15] = 0xff;
    high[3] = 0x80;
    EXPECT_LT(low, high);
    EXPECT_FALSE(high < low);
    EXPECT_TRUE(uuid().isNil());
    EXPECT_FALSE(low.isNil());
}

TEST(Guid, NumbersAreWrittenMostSignificantByteFirst) {
    AttributeContainer::Guid const guid{0x01234567, 0x89ab, 0xcdef, {1, 2, 3, 4, 5, 6, 7, 8}};
    EXPECT_EQ(toUuid(guid).toString(), "01234567-89ab-cdef-0102-030405060708");
}

TEST(Guid, NewOnesAreDistinctAndOfVersionFour) {
    std::set<uuid> made;
    for (int i = 0; i < 100; ++i) {
        AttributeContainer::Guid guid;
        ASSERT_TRUE(createGuid(guid));
        uuid const id = toUuid(guid);
        EXPECT_EQ(id[6] >> 4, 4) << id.toString();
        EXPECT_EQ(id[8] >> 6, 2) << id.toString();
        made.insert(id);
    }
    EXPECT_EQ(made.size(), 100u);
}

} // namespace
