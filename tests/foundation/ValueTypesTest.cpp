// SPDX-License-Identifier: MIT
#include "DataFile.h"
#include "platform/Guid.h"

#include <AttributeContainer/AttrType.h>
#include <AttributeContainer/Statistics.h>
#include <AttributeContainer/Uuid.h>
#include <AttributeContainer/ValueTypes.h>

#include <set>

using namespace Zorvan;
using uuids::uuid;
using Point = ScanPtColor<Vec3d<float>>;

namespace {

template <class T, std::size_t Size>
constexpr bool isPlainOfSize = std::is_trivially_copyable_v<T> && sizeof(T) == Size;

static_assert(isPlainOfSize<Vec3d<double>, 24> && isPlainOfSize<Vec4d<unsigned char>, 4>);
static_assert(isPlainOfSize<SVec2d<unsigned short>, 4> && isPlainOfSize<SVec3d<int>, 12>);
static_assert(isPlainOfSize<Mat4d<float>, 64> && isPlainOfSize<uuid, 16> && isPlainOfSize<Point, 18>);
static_assert(isPlainOfSize<StatisticVal<double>, 32> && isPlainOfSize<StatisticValLimits<double>, 96>);
static_assert(!std::equality_comparable_with<Vec3d<int>, SVec3d<int>>);
static_assert(AttributeContainer::AttrTypeVecPoly3d == 30 && AttributeContainer::AttrTypeUnknown == 54);

TEST(ValueTypes, ComponentsStandInTheOrderGivenAndAreCompared) {
    EXPECT_EQ(Vec4d<float>(1, 2, 3, 4).w(), 4);
    Point const point({1.5f, -2, 3}, {1, 2, 3, 4});
    EXPECT_EQ(Point(point.getPoint(), point.getColor()), point);
    EXPECT_NE(point, Point({0, -2, 3}, {1, 2, 3, 4}));
    EXPECT_NE(point, Point({1.5f, -2, 3}, {1, 2, 3, 5}));
}

TEST(Uuid, TextIsReadByItsDigitsAndOrderedByItsBytes) {
    for (auto const& row : dataRows("foundation/uuids.txt")) {
        auto const read = uuid::fromString(row[0]);
        EXPECT_EQ(row[1] == "none" ? "" : "01234567-89ab-cdef-0123-456789abcdef",
                  read ? read->toString() : "")
            << row.place;
    }
    EXPECT_LT(uuid({0, 0x7f, 0xff}), uuid({0, 0x80}));
}

TEST(Guid, NewOnesAreDistinctAndOfVersionFour) {
    AttributeContainer::Guid guid{0x01234567, 0x89ab, 0xcdef, {1, 2, 3, 4, 5, 6, 7, 8}};
    EXPECT_EQ(toUuid(guid).toString(), "01234567-89ab-cdef-0102-030405060708");
    std::set<uuid> made;
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(createGuid(guid));
        uuid const id = toUuid(guid);
        EXPECT_TRUE(id[6] >> 4 == 4 && id[8] >> 6 == 2) << id.toString();
        made.insert(id);
    }
    EXPECT_EQ(made.size(), 100u);
}

} // namespace
