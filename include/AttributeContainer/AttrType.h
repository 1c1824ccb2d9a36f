// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace Zorvan::AttributeContainer {

/// The types of attributes by number. Each number belongs to a type name such as "Attr<int>", which documents
/// carry.
enum AttrType : std::uint32_t {
    AttrTypeInt = 0,
    AttrTypeInt8 = 1,
    AttrTypeUInt8 = 2,
    AttrTypeInt16 = 3,
    AttrTypeUInt16 = 4,
    AttrTypeInt32 = 5, ///< the attribute class of AttrTypeInt
    AttrTypeUInt32 = 6,
    AttrTypeInt64 = 7,
    AttrTypeUInt64 = 8,
    AttrTypeDouble = 9,
    AttrTypeString = 10,
    AttrTypeBool = 11,
    AttrTypeVec3dd = 12,
    AttrTypeVec3df = 13,
    AttrTypeSVec3us = 14,
    AttrTypeVec4dd = 15,
    AttrTypeVec4df = 16,
    AttrTypeSVec2dd = 17,
    AttrTypeSVec2df = 18,
    AttrTypeSVec2i = 19,
    AttrTypeSVec2ui = 20,
    AttrTypeStringArray = 21,
    AttrTypeStringSet = 22,
    AttrTypeStringMap = 23,
    AttrTypeMat4df = 24,
    AttrTypeMat4dd = 25,
    AttrTypeDVector = 26,
    AttrTypeVec3ddVector = 27,
    AttrTypeVec3dfVector = 28,
    AttrTypeVec4ddVector = 29,
    AttrTypeVecPoly3d = 30,
    AttrTypeVec2ddVector = 31,
    AttrTypeVec2dfVector = 32,
    AttrTypeIntVector = 33,
    AttrTypeUIntVector = 34, ///< the attribute class of AttrTypeUInt32Vector
    AttrTypeInt8Vector = 35,
    AttrTypeUInt8Vector = 36,
    AttrTypeInt16Vector = 37,
    AttrTypeUInt16Vector = 38,
    AttrTypeInt32Vector = 39, ///< the attribute class of AttrTypeIntVector
    AttrTypeUInt32Vector = 40,
    AttrTypeInt64Vector = 41,
    AttrTypeUInt64Vector = 42,
    AttrTypeVec2iVector = 43,
    AttrTypeVec2usVector = 44,
    AttrTypeMat4ddVector = 45,
    AttrTypeUuid = 46,
    AttrTypeVec3uiVector = 47,
    AttrTypeUuidSet = 48,
    AttrTypeScanPt = 49,       ///< no attribute is made of this type
    AttrTypeScanPtVector = 50, ///< no attribute is made of this type
    AttrTypeUuidVector = 51,
    AttrTypeBoolVector = 52,
    AttrTypeJsonValue = 53, ///< no attribute is made of this type
    AttrTypeUnknown = 54    ///< a type name that is not known
};

} // namespace Zorvan::AttributeContainer
