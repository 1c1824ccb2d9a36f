// SPDX-License-Identifier: MIT
#include <AttributeContainer/DataInFormat.h>

#include "serialization/ValueReader.h"

#include <utility>

namespace Zorvan::AttributeContainer {

template <class T>
DataInFormat<T>::DataInFormat(std::istream& in, ModelFormat::Format format) : in_(&in), format_(format) {}

template <class T>
T const& DataInFormat<T>::get() {
    CharReader reader(*in_);
    ValueReader(reader, format_).read(value_);
    return value_;
}

template <class T>
T DataInFormat<T>::take() {
    get();
    return std::move(value_);
}

template class DataInFormat<bool>;
template class DataInFormat<signed char>;
template class DataInFormat<unsigned char>;
template class DataInFormat<short>;
template class DataInFormat<unsigned short>;
template class DataInFormat<int>;
template class DataInFormat<unsigned int>;
template class DataInFormat<std::int64_t>;
template class DataInFormat<std::uint64_t>;
template class DataInFormat<float>;
template class DataInFormat<double>;
template class DataInFormat<std::string>;
template class DataInFormat<uuids::uuid>;
template class DataInFormat<SVec2d<unsigned short>>;
template class DataInFormat<SVec2d<int>>;
template class DataInFormat<SVec2d<unsigned int>>;
template class DataInFormat<SVec2d<float>>;
template class DataInFormat<SVec2d<double>>;
template class DataInFormat<SVec3d<unsigned short>>;
template class DataInFormat<SVec3d<int>>;
template class DataInFormat<SVec3d<unsigned int>>;
template class DataInFormat<Vec3d<float>>;
template class DataInFormat<Vec3d<double>>;
template class DataInFormat<Vec4d<float>>;
template class DataInFormat<Vec4d<double>>;
template class DataInFormat<Vec4d<unsigned char>>;
template class DataInFormat<Mat4d<float>>;
template class DataInFormat<Mat4d<double>>;
template class DataInFormat<ScanPtColor<Vec3d<float>>>;
template class DataInFormat<StatisticVal<double>>;
template class DataInFormat<StatisticValLimits<double>>;
template class DataInFormat<Time>;
template class DataInFormat<VersionNum>;
template class DataInFormat<std::map<std::string, std::string>>;
template class DataInFormat<std::set<std::string>>;
template class DataInFormat<std::set<unsigned int>>;
template class DataInFormat<std::set<std::uint64_t>>;
template class DataInFormat<std::set<uuids::uuid>>;
template class DataInFormat<std::vector<std::string>>;
template class DataInFormat<std::vector<bool>>;
template class DataInFormat<std::vector<signed char>>;
template class DataInFormat<std::vector<unsigned char>>;
template class DataInFormat<std::vector<short>>;
template class DataInFormat<std::vector<unsigned short>>;
template class DataInFormat<std::vector<int>>;
template class DataInFormat<std::vector<unsigned int>>;
template class DataInFormat<std::vector<std::int64_t>>;
template class DataInFormat<std::vector<std::uint64_t>>;
template class DataInFormat<std::vector<double>>;
template class DataInFormat<std::vector<uuids::uuid>>;
template class DataInFormat<std::vector<SVec2d<unsigned short>>>;
template class DataInFormat<std::vector<SVec2d<int>>>;
template class DataInFormat<std::vector<SVec2d<float>>>;
template class DataInFormat<std::vector<SVec2d<double>>>;
template class DataInFormat<std::vector<SVec3d<unsigned int>>>;
template class DataInFormat<std::vector<Vec3d<float>>>;
template class DataInFormat<std::vector<Vec3d<double>>>;
template class DataInFormat<std::vector<Vec4d<double>>>;
template class DataInFormat<std::vector<Mat4d<double>>>;
template class DataInFormat<std::vector<ScanPtColor<Vec3d<float>>>>;
template class DataInFormat<std::vector<std::vector<Vec3d<double>>>>;

} // namespace Zorvan::AttributeContainer
