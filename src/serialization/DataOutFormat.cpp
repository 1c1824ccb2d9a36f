// SPDX-License-Identifier: MIT
#include <AttributeContainer/DataOutFormat.h>

#include "serialization/LineWriter.h"
#include "serialization/ValueWriter.h"

namespace Zorvan::AttributeContainer {

template <class T>
DataOutFormat<T>::DataOutFormat(std::ostream& out, ModelFormat::Format format) noexcept
    : out_(&out), format_(format) {}

template <class T>
void DataOutFormat<T>::put(T const& value) {
    TextSink sink(*out_);
    ValueWriter(sink, format_).put(value);
    sink.finish();
}

template <class T>
void DataOutFormat<T>::appendLine(LineWriter& line, T const& value) {
    line.startValue("Value");
    ValueWriter(line.sink(), line.format()).put(value);
    line.endValue();
}

template class DataOutFormat<bool>;
template class DataOutFormat<signed char>;
template class DataOutFormat<unsigned char>;
template class DataOutFormat<short>;
template class DataOutFormat<unsigned short>;
template class DataOutFormat<int>;
template class DataOutFormat<unsigned int>;
template class DataOutFormat<std::int64_t>;
template class DataOutFormat<std::uint64_t>;
template class DataOutFormat<float>;
template class DataOutFormat<double>;
template class DataOutFormat<std::string>;
template class DataOutFormat<uuids::uuid>;
template class DataOutFormat<SVec2d<unsigned short>>;
template class DataOutFormat<SVec2d<int>>;
template class DataOutFormat<SVec2d<unsigned int>>;
template class DataOutFormat<SVec2d<float>>;
template class DataOutFormat<SVec2d<double>>;
template class DataOutFormat<SVec3d<unsigned short>>;
template class DataOutFormat<SVec3d<int>>;
template class DataOutFormat<SVec3d<unsigned int>>;
template class DataOutFormat<Vec3d<float>>;
template class DataOutFormat<Vec3d<double>>;
template class DataOutFormat<Vec4d<float>>;
template class DataOutFormat<Vec4d<double>>;
template class DataOutFormat<Vec4d<unsigned char>>;
template class DataOutFormat<Mat4d<float>>;
template class DataOutFormat<Mat4d<double>>;
template class DataOutFormat<ScanPtColor<Vec3d<float>>>;
template class DataOutFormat<StatisticVal<double>>;
template class DataOutFormat<StatisticValLimits<double>>;
template class DataOutFormat<Time>;
template class DataOutFormat<VersionNum>;
template class DataOutFormat<std::map<std::string, std::string>>;
template class DataOutFormat<std::set<std::string>>;
template class DataOutFormat<std::set<unsigned int>>;
template class DataOutFormat<std::set<std::uint64_t>>;
template class DataOutFormat<std::set<uuids::uuid>>;
template class DataOutFormat<std::vector<std::string>>;
template class DataOutFormat<std::vector<bool>>;
template class DataOutFormat<std::vector<signed char>>;
template class DataOutFormat<std::vector<unsigned char>>;
template class DataOutFormat<std::vector<short>>;
template class DataOutFormat<std::vector<unsigned short>>;
template class DataOutFormat<std::vector<int>>;
template class DataOutFormat<std::vector<unsigned int>>;
template class DataOutFormat<std::vector<std::int64_t>>;
template class DataOutFormat<std::vector<std::uint64_t>>;
template class DataOutFormat<std::vector<double>>;
template class DataOutFormat<std::vector<uuids::uuid>>;
template class DataOutFormat<std::vector<SVec2d<unsigned short>>>;
template class DataOutFormat<std::vector<SVec2d<int>>>;
template class DataOutFormat<std::vector<SVec2d<float>>>;
template class DataOutFormat<std::vector<SVec2d<double>>>;
template class DataOutFormat<std::vector<SVec3d<unsigned int>>>;
template class DataOutFormat<std::vector<Vec3d<float>>>;
template class DataOutFormat<std::vector<Vec3d<double>>>;
template class DataOutFormat<std::vector<Vec4d<double>>>;
template class DataOutFormat<std::vector<Mat4d<double>>>;
template class DataOutFormat<std::vector<ScanPtColor<Vec3d<float>>>>;
template class DataOutFormat<std::vector<std::vector<Vec3d<double>>>>;

} // namespace Zorvan::AttributeContainer
