// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/AttrType.h>
#include <AttributeContainer/Uuid.h>
#include <AttributeContainer/ValueTypes.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer {

using StringMap = std::map<std::string, std::string>;
using ScanPt = ScanPtColor<Vec3d<float>>;

} // namespace Zorvan::AttributeContainer

// The types with an attribute class: X(number, type name, value type). The list is split so that the
// instantiations can be spread over several files. Rows that share a class with another one (Int32,
// UIntVector, Int32Vector) are not listed.

#define KX_ATTR_TYPES_NUMBERS(X)                                                                             \
    X(AttrTypeInt, "Attr<int>", int)                                                                         \
    X(AttrTypeInt8, "Attr<int8_t>", signed char)                                                             \
    X(AttrTypeUInt8, "Attr<uint8_t>", unsigned char)                                                         \
    X(AttrTypeInt16, "Attr<int16_t>", short)                                                                 \
    X(AttrTypeUInt16, "Attr<uint16_t>", unsigned short)                                                      \
    X(AttrTypeUInt32, "Attr<uint32_t>", unsigned int)                                                        \
    X(AttrTypeInt64, "Attr<int64_t>", std::int64_t)                                                          \
    X(AttrTypeUInt64, "Attr<uint64_t>", std::uint64_t)                                                       \
    X(AttrTypeDouble, "Attr<double>", double)                                                                \
    X(AttrTypeString, "Attr<String>", std::string)                                                           \
    X(AttrTypeBool, "Attr<bool>", bool)                                                                      \
    X(AttrTypeUuid, "Attr<Uuid>", uuids::uuid)

#define KX_ATTR_TYPES_PLAIN_GEOMETRY(X)                                                                      \
    X(AttrTypeVec3dd, "Attr<Vec3dd>", Vec3d<double>)                                                         \
    X(AttrTypeVec3df, "Attr<Vec3df>", Vec3d<float>)                                                          \
    X(AttrTypeSVec3us, "Attr<SVec3us>", SVec3d<unsigned short>)                                              \
    X(AttrTypeVec4dd, "Attr<Vec4dd>", Vec4d<double>)                                                         \
    X(AttrTypeVec4df, "Attr<Vec4df>", Vec4d<float>)                                                          \
    X(AttrTypeSVec2dd, "Attr<SVec2dd>", SVec2d<double>)                                                      \
    X(AttrTypeSVec2df, "Attr<SVec2df>", SVec2d<float>)                                                       \
    X(AttrTypeSVec2i, "Attr<SVec2i>", SVec2d<int>)                                                           \
    X(AttrTypeSVec2ui, "Attr<SVec2ui>", SVec2d<unsigned int>)                                                \
    X(AttrTypeMat4df, "Attr<Mat4df>", Mat4d<float>)                                                          \
    X(AttrTypeMat4dd, "Attr<Mat4dd>", Mat4d<double>)

// No attribute is made of the coloured points by a definition; their classes are there for applications.
#define KX_ATTR_TYPES_GEOMETRY(X)                                                                            \
    KX_ATTR_TYPES_PLAIN_GEOMETRY(X)                                                                          \
    X(AttrTypeScanPt, "Attr<ScanPt>", ScanPt)

#define KX_ATTR_TYPES_COLLECTIONS(X)                                                                         \
    X(AttrTypeStringArray, "Attr<StringArray>", std::vector<std::string>)                                    \
    X(AttrTypeStringSet, "Attr<StringSet>", std::set<std::string>)                                           \
    X(AttrTypeStringMap, "Attr<StringMap>", StringMap)                                                       \
    X(AttrTypeDVector, "Attr<DVector>", std::vector<double>)                                                 \
    X(AttrTypeIntVector, "Attr<IntVector>", std::vector<int>)                                                \
    X(AttrTypeInt8Vector, "Attr<Int8Vector>", std::vector<signed char>)                                      \
    X(AttrTypeUInt8Vector, "Attr<UInt8Vector>", std::vector<unsigned char>)                                  \
    X(AttrTypeInt16Vector, "Attr<Int16Vector>", std::vector<short>)                                          \
    X(AttrTypeUInt16Vector, "Attr<UInt16Vector>", std::vector<unsigned short>)                               \
    X(AttrTypeUInt32Vector, "Attr<UInt32Vector>", std::vector<unsigned int>)                                 \
    X(AttrTypeInt64Vector, "Attr<Int64Vector>", std::vector<std::int64_t>)                                   \
    X(AttrTypeUInt64Vector, "Attr<UInt64Vector>", std::vector<std::uint64_t>)                                \
    X(AttrTypeBoolVector, "Attr<BoolVector>", std::vector<bool>)

#define KX_ATTR_TYPES_PLAIN_GEOMETRY_COLLECTIONS(X)                                                          \
    X(AttrTypeVec3ddVector, "Attr<Vec3ddVector>", std::vector<Vec3d<double>>)                                \
    X(AttrTypeVec3dfVector, "Attr<Vec3dfVector>", std::vector<Vec3d<float>>)                                 \
    X(AttrTypeVec4ddVector, "Attr<Vec4ddVector>", std::vector<Vec4d<double>>)                                \
    X(AttrTypeVecPoly3d, "Attr<VecPoly3d>", std::vector<std::vector<Vec3d<double>>>)                         \
    X(AttrTypeVec2ddVector, "Attr<Vec2ddVector>", std::vector<SVec2d<double>>)                               \
    X(AttrTypeVec2dfVector, "Attr<Vec2dfVector>", std::vector<SVec2d<float>>)                                \
    X(AttrTypeVec2iVector, "Attr<Vec2iVector>", std::vector<SVec2d<int>>)                                    \
    X(AttrTypeVec2usVector, "Attr<Vec2usVector>", std::vector<SVec2d<unsigned short>>)                       \
    X(AttrTypeMat4ddVector, "Attr<Mat4ddVector>", std::vector<Mat4d<double>>)                                \
    X(AttrTypeVec3uiVector, "Attr<Vec3uiVector>", std::vector<SVec3d<unsigned int>>)                         \
    X(AttrTypeUuidSet, "Attr<UuidSet>", std::set<uuids::uuid>)                                               \
    X(AttrTypeUuidVector, "Attr<UuidVector>", std::vector<uuids::uuid>)

#define KX_ATTR_TYPES_GEOMETRY_COLLECTIONS(X)                                                                \
    KX_ATTR_TYPES_PLAIN_GEOMETRY_COLLECTIONS(X)                                                              \
    X(AttrTypeScanPtVector, "Attr<ScanPtVector>", std::vector<ScanPt>)
