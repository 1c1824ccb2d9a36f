// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/AttrDefinition.h>

#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer::Testing {

inline uuids::uuid sampleUuid(unsigned char last) {
    uuids::uuid id;
    id[0] = 0xab;
    id[15] = last;
    return id;
}

template <class T>
Mat4d<T> sampleMatrix() {
    Mat4d<T> matrix;
    matrix[1] = T(0.5);
    matrix[15] = T(-2);
    return matrix;
}

/// Calls `check(type, class name, value, text form)` for each of the 48 attribute types. The value differs
/// from the initial one and has an exact text form.
template <class Check>
void forEachAttributeType(Check const& check) {
    using Strings = std::vector<std::string>;
    using Map = std::map<std::string, std::string>;
    using P3 = Vec3d<double>;
    std::string const id = "ab000000-0000-0000-0000-0000000000";
    std::string const matrix = "0, 0.5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -2";

    check(AttrTypeInt, "Attr<int>", -5, "-5");
    check(AttrTypeInt8, "Attr<int8_t>", static_cast<signed char>(65), "A");
    check(AttrTypeUInt8, "Attr<uint8_t>", static_cast<unsigned char>(200), "\xc8");
    check(AttrTypeInt16, "Attr<int16_t>", static_cast<short>(-32768), "-32768");
    check(AttrTypeUInt16, "Attr<uint16_t>", static_cast<unsigned short>(65535), "65535");
    check(AttrTypeUInt32, "Attr<uint32_t>", 4294967295u, "4294967295");
    check(AttrTypeInt64, "Attr<int64_t>", std::numeric_limits<std::int64_t>::min(), "-9223372036854775808");
    check(AttrTypeUInt64, "Attr<uint64_t>", std::numeric_limits<std::uint64_t>::max(),
          "18446744073709551615");
    check(AttrTypeDouble, "Attr<double>", 2.5, "2.5");
    check(AttrTypeString, "Attr<String>", std::string("it's \"a\\b\" <&> {1}"), "it's \"a\\b\" <&> {1}");
    check(AttrTypeBool, "Attr<bool>", true, "true");
    check(AttrTypeVec3dd, "Attr<Vec3dd>", P3(0.5, 1, 1e-7), "0.5 1 1e-07 ");
    check(AttrTypeVec3df, "Attr<Vec3df>", Vec3d<float>(1, -2, 0.25f), "1 -2 0.25 ");
    check(AttrTypeSVec3us, "Attr<SVec3us>", SVec3d<unsigned short>(1, 2, 65535), "1 2 65535 ");
    check(AttrTypeVec4dd, "Attr<Vec4dd>", Vec4d<double>(1, 2, 3, -4.5), "1 2 3 -4.5 ");
    check(AttrTypeVec4df, "Attr<Vec4df>", Vec4d<float>(0, 0, 0, 1e20f), "0 0 0 1e+20 ");
    check(AttrTypeSVec2dd, "Attr<SVec2dd>", SVec2d<double>(0, -1), "0 -1 ");
    check(AttrTypeSVec2df, "Attr<SVec2df>", SVec2d<float>(1.5f, 2), "1.5 2 ");
    check(AttrTypeSVec2i, "Attr<SVec2i>", SVec2d<int>(-1, 7), "-1 7 ");
    check(AttrTypeSVec2ui, "Attr<SVec2ui>", SVec2d<unsigned int>(0, 4294967295u), "0 4294967295 ");
    check(AttrTypeStringArray, "Attr<StringArray>", Strings{"one", "two"}, "{ one two } ");
    check(AttrTypeStringSet, "Attr<StringSet>", std::set<std::string>{"b", "a"}, "{ a b } ");
    check(AttrTypeStringMap, "Attr<StringMap>", Map{{"b", "y"}, {"a", "x"}},
          "{ \"a\"=>\"x\" \"b\"=>\"y\" } ");
    check(AttrTypeMat4df, "Attr<Mat4df>", sampleMatrix<float>(), matrix);
    check(AttrTypeMat4dd, "Attr<Mat4dd>", sampleMatrix<double>(), matrix);
    check(AttrTypeDVector, "Attr<DVector>", std::vector<double>{0, -0.5}, "{ 0 -0.5 } ");
    check(AttrTypeVec3ddVector, "Attr<Vec3ddVector>", std::vector<P3>{{1, 2, 3}, {}}, "{ 1 2 3  0 0 0  } ");
    check(AttrTypeVec3dfVector, "Attr<Vec3dfVector>", std::vector<Vec3d<float>>{{1, 2, 3}}, "{ 1 2 3  } ");
    check(AttrTypeVec4ddVector, "Attr<Vec4ddVector>", std::vector<Vec4d<double>>{{1, 2, 3, 4}},
          "{ 1 2 3 4  } ");
    check(AttrTypeVecPoly3d, "Attr<VecPoly3d>", std::vector<std::vector<P3>>{{{1, 2, 3}}, {}},
          "{ { 1 2 3  }  { }  } ");
    check(AttrTypeVec2ddVector, "Attr<Vec2ddVector>", std::vector<SVec2d<double>>{{1, 2}}, "{ 1 2  } ");
    check(AttrTypeVec2dfVector, "Attr<Vec2dfVector>", std::vector<SVec2d<float>>{{1, 2}}, "{ 1 2  } ");
    check(AttrTypeIntVector, "Attr<IntVector>", std::vector<int>{1, -2}, "{ 1 -2 } ");
    check(AttrTypeInt8Vector, "Attr<Int8Vector>", std::vector<signed char>{65, 66}, "{ A B } ");
    check(AttrTypeUInt8Vector, "Attr<UInt8Vector>", std::vector<unsigned char>{67}, "{ C } ");
    check(AttrTypeInt16Vector, "Attr<Int16Vector>", std::vector<short>{-1, 0}, "{ -1 0 } ");
    check(AttrTypeUInt16Vector, "Attr<UInt16Vector>", std::vector<unsigned short>{65535}, "{ 65535 } ");
    check(AttrTypeUInt32Vector, "Attr<UInt32Vector>", std::vector<unsigned int>{0}, "{ 0 } ");
    check(AttrTypeInt64Vector, "Attr<Int64Vector>", std::vector<std::int64_t>{-1}, "{ -1 } ");
    check(AttrTypeUInt64Vector, "Attr<UInt64Vector>", std::vector<std::uint64_t>{1, 2}, "{ 1 2 } ");
    check(AttrTypeVec2iVector, "Attr<Vec2iVector>", std::vector<SVec2d<int>>{{-1, -1}}, "{ -1 -1  } ");
    check(AttrTypeVec2usVector, "Attr<Vec2usVector>", std::vector<SVec2d<unsigned short>>{{1, 2}},
          "{ 1 2  } ");
    check(AttrTypeMat4ddVector, "Attr<Mat4ddVector>", std::vector<Mat4d<double>>{sampleMatrix<double>()},
          "{ " + matrix + " } ");
    check(AttrTypeUuid, "Attr<Uuid>", sampleUuid(0x0f), id + "0f");
    check(AttrTypeVec3uiVector, "Attr<Vec3uiVector>", std::vector<SVec3d<unsigned int>>{{1, 2, 3}},
          "{ 1 2 3  } ");
    check(AttrTypeUuidSet, "Attr<UuidSet>", std::set<uuids::uuid>{sampleUuid(2), sampleUuid(1)},
          "{ " + id + "01 " + id + "02 } ");
    check(AttrTypeUuidVector, "Attr<UuidVector>", std::vector<uuids::uuid>{sampleUuid(2)},
          "{ " + id + "02 } ");
    check(AttrTypeBoolVector, "Attr<BoolVector>", std::vector<bool>{true, false}, "{ true false } ");
}

} // namespace Zorvan::AttributeContainer::Testing
