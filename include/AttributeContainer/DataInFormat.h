// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>
#include <AttributeContainer/ModelFormat.h>
#include <AttributeContainer/Statistics.h>
#include <AttributeContainer/Time.h>
#include <AttributeContainer/Uuid.h>
#include <AttributeContainer/ValueTypes.h>
#include <AttributeContainer/Version.h>

#include <cstdint>
#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer {

/// Reads one value of type `T` from a stream, in the form that `DataOutFormat<T>` writes.
///
/// Numbers are read in the form of the classic locale. A value that could not be parsed leaves `failbit` set
/// and what was read of it in place; a number out of range fails with the nearest value, but a floating-point
/// one only becomes the largest finite value or zero. The types are those listed below.
template <class T>
class KX_ATTRIBUTECONTAINER_API DataInFormat {
public:
    /// Reads from `in`, which must outlive this object.
    DataInFormat(std::istream& in, ModelFormat::Format format);

    /// Reads one value; the reference is good as long as this object is.
    T const& get();

    /// Reads one value and hands it over.
    T take();

private:
    std::istream* in_;
    ModelFormat::Format format_;
    T value_{};
};

extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<bool>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<signed char>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<unsigned char>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<short>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<unsigned short>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<int>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<unsigned int>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::int64_t>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::uint64_t>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<float>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<double>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::string>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<uuids::uuid>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<SVec2d<unsigned short>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<SVec2d<int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<SVec2d<unsigned int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<SVec2d<float>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<SVec2d<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<SVec3d<unsigned short>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<SVec3d<int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<SVec3d<unsigned int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<Vec3d<float>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<Vec3d<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<Vec4d<float>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<Vec4d<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<Vec4d<unsigned char>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<Mat4d<float>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<Mat4d<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<ScanPtColor<Vec3d<float>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<StatisticVal<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<StatisticValLimits<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<Time>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<VersionNum>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::map<std::string, std::string>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::set<std::string>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::set<unsigned int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::set<std::uint64_t>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::set<uuids::uuid>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<std::string>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<bool>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<signed char>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<unsigned char>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<short>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<unsigned short>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<unsigned int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<std::int64_t>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<std::uint64_t>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<uuids::uuid>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<SVec2d<unsigned short>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<SVec2d<int>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<SVec2d<float>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<SVec2d<double>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<SVec3d<unsigned int>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<Vec3d<float>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<Vec3d<double>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<Vec4d<double>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<Mat4d<double>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<ScanPtColor<Vec3d<float>>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataInFormat<std::vector<std::vector<Vec3d<double>>>>;

} // namespace Zorvan::AttributeContainer
