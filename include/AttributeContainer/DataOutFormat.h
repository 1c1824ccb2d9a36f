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

class LineWriter;
template <class T>
class Attr;

/// Writes one value of type `T` to a stream in the form that `DataInFormat<T>` reads; no line break before or
/// after it.
///
/// Numbers have the form of the classic locale whatever locale the stream has, and enough digits to tell
/// neighbouring values of moderate size apart; a component that is not finite is written as 0. The types are
/// those listed below. A failure is the stream's state; nothing is written to a stream that is not good.
template <class T>
class KX_ATTRIBUTECONTAINER_API DataOutFormat {
public:
    /// Writes to `out`, which must outlive this object.
    DataOutFormat(std::ostream& out, ModelFormat::Format format) noexcept;

    /// Writes `value` and leaves the stream's precision at 8 where the value has floating-point parts or is a
    /// container.
    void put(T const& value);

private:
    template <class U>
    friend class Attr;

    /// Appends the entry "Value" with `value`.
    static void appendLine(LineWriter& line, T const& value);

    std::ostream* out_;
    ModelFormat::Format format_;
};

extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<bool>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<signed char>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<unsigned char>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<short>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<unsigned short>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<int>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<unsigned int>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::int64_t>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::uint64_t>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<float>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<double>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::string>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<uuids::uuid>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<SVec2d<unsigned short>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<SVec2d<int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<SVec2d<unsigned int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<SVec2d<float>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<SVec2d<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<SVec3d<unsigned short>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<SVec3d<int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<SVec3d<unsigned int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<Vec3d<float>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<Vec3d<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<Vec4d<float>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<Vec4d<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<Vec4d<unsigned char>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<Mat4d<float>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<Mat4d<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<ScanPtColor<Vec3d<float>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<StatisticVal<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<StatisticValLimits<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<Time>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<VersionNum>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::map<std::string, std::string>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::set<std::string>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::set<unsigned int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::set<std::uint64_t>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::set<uuids::uuid>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<std::string>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<bool>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<signed char>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<unsigned char>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<short>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<unsigned short>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<unsigned int>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<std::int64_t>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<std::uint64_t>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<double>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<uuids::uuid>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<SVec2d<unsigned short>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<SVec2d<int>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<SVec2d<float>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<SVec2d<double>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<SVec3d<unsigned int>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<Vec3d<float>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<Vec3d<double>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<Vec4d<double>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<Mat4d<double>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<ScanPtColor<Vec3d<float>>>>;
extern template class KX_ATTRIBUTECONTAINER_API DataOutFormat<std::vector<std::vector<Vec3d<double>>>>;

} // namespace Zorvan::AttributeContainer
