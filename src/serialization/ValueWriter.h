// SPDX-License-Identifier: MIT
#pragma once

#include "foundation/UuidText.h"
#include "serialization/FloatText.h"
#include "serialization/QuotedText.h"
#include "serialization/TextSink.h"

#include <AttributeContainer/ModelFormat.h>
#include <AttributeContainer/Statistics.h>
#include <AttributeContainer/Time.h>
#include <AttributeContainer/Uuid.h>
#include <AttributeContainer/ValueTypes.h>
#include <AttributeContainer/Version.h>

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace Zorvan::AttributeContainer {

/// Appends values of all types to a sink. Containers and the composed types are built from the overloads for
/// their parts.
class ValueWriter {
public:
    ValueWriter(TextSink& sink, ModelFormat::Format format) noexcept : sink_(sink), format_(format) {}

    void put(bool value) { sink_.append(value ? std::string_view("true") : std::string_view("false")); }

    template <std::integral T>
    void put(T value) {
        sink_.appendInteger(value);
    }

    template <std::floating_point T>
    void put(T value) {
        putShared(std::array<T, 1>{value});
    }

    void put(std::string const& value) { appendQuoted(sink_, value, format_); }
    void put(uuids::uuid const& value) {
        sink_.commit(uuids::putUuidText(sink_.reserve(uuids::uuidTextSize), value));
    }

    template <class T>
    void put(SVec2d<T> const& value) {
        putComponents(value);
        if (std::is_same_v<T, int> || std::is_same_v<T, unsigned int>)
            sink_.append(' ');
    }

    template <class T>
    void put(SVec3d<T> const& value) {
        putComponents(value);
        if (std::is_same_v<T, unsigned int>)
            sink_.append(' ');
    }

    template <class T>
    void put(Vec3d<T> const& value) {
        putComponents(value);
    }

    template <class T>
    void put(Vec4d<T> const& value) {
        putComponents(value);
    }

    // Colours are kept as characters, whatever these are.
    void put(Vec4d<unsigned char> const& value) {
        for (std::size_t i = 0; i < value.size(); ++i) {
            if (i > 0)
                sink_.append(' ');
            sink_.append(static_cast<char>(value[i]));
        }
    }

    template <class T>
    void put(Mat4d<T> const& value) {
        for (std::size_t i = 0; i < value.size(); ++i) {
            put(value[i]);
            sink_.append(i % 4 == 3 ? std::string_view("  ") : std::string_view(" "));
        }
    }

    // The coordinates have as many digits as the stream says.
    void put(ScanPtColor<Vec3d<float>> const& value) {
        auto const precision =
            static_cast<int>(std::clamp<std::streamsize>(sink_.stream().precision(), 0, 100));
        for (float const coordinate : value.getPoint()) {
            appendFloat(sink_, finiteOrZero(coordinate), precision);
            sink_.append(' ');
        }
        putSeparated(value.getColor());
    }

    void put(StatisticVal<double> const& value) {
        sink_.append("StatisticVal ");
        putStatistic(value.values);
    }

    void put(StatisticValLimits<double> const& value) {
        sink_.append("StatisticValLimitsEx ");
        putStatistic(value.values);
        sink_.append(" Limits [");
        put(value.limits[0]);
        sink_.append(',');
        put(value.limits[1]);
        sink_.append("] [");
        put(value.limits[2]);
        sink_.append(',');
        put(value.limits[3]);
        sink_.append(']');
    }

    void put(Time const& value) {
        sink_.appendInteger(value.getDay()).append('.').appendInteger(value.getMonth()).append('.');
        sink_.appendInteger(value.getYear()).append(' ').appendInteger(value.getHour()).append(':');
        sink_.appendInteger(value.getMinute()).append(':').appendInteger(value.getSecond());
    }

    void put(VersionNum const& value) {
        put(value.name);
        sink_.append(' ').append(value.getReleaseNumbers());
    }

    void put(std::map<std::string, std::string> const& value) {
        putCount(value.size());
        for (auto const& [key, text] : value) {
            sink_.append(' ');
            put(key);
            sink_.append("=>");
            put(text);
        }
    }

    void put(std::vector<std::string> const& value) { putCounted(value); }
    void put(std::set<std::string> const& value) { putCounted(value); }

    template <class T>
    void put(std::vector<T> const& value) {
        putCollection(value);
    }

    template <class T>
    void put(std::set<T> const& value) {
        putCollection(value);
    }

private:
    void resetPrecision() { sink_.stream().precision(USUAL_PRECISION); }

    // Values separated by blanks, all with the largest precision that one of them has.
    template <class Range>
    void putShared(Range const& values) {
        int precision = 0;
        for (auto const value : values)
            precision = std::max(precision, precisionFor(finiteOrZero(value)));
        bool first = true;
        for (auto const value : values) {
            if (!first)
                sink_.append(' ');
            first = false;
            appendFloat(sink_, finiteOrZero(value), precision);
        }
        resetPrecision();
    }

    template <class Range>
    void putSeparated(Range const& values) {
        bool first = true;
        for (auto const value : values) {
            if (!first)
                sink_.append(' ');
            first = false;
            sink_.appendInteger(value);
        }
    }

    template <class Vector>
    void putComponents(Vector const& value) {
        if constexpr (std::floating_point<typename Vector::value_type>)
            putShared(value);
        else
            putSeparated(value);
    }

    void putStatistic(std::array<double, 4> const& values) {
        put(values[0]);
        sink_.append('[');
        put(values[1]);
        sink_.append(',');
        put(values[2]);
        sink_.append(']');
        put(values[3]);
    }

    void putCount(std::size_t count) {
        resetPrecision();
        sink_.appendInteger(count);
    }

    template <class Container>
    void putCounted(Container const& value) {
        putCount(value.size());
        for (std::string const& text : value) {
            sink_.append(' ');
            put(text);
        }
    }

    template <class Container>
    void putCollection(Container const& value) {
        resetPrecision();
        sink_.append('{');
        for (auto const& element : value) {
            sink_.append(' ');
            put(static_cast<typename Container::value_type const&>(element));
        }
        sink_.append(" } ");
    }

    TextSink& sink_;
    ModelFormat::Format format_;
};

} // namespace Zorvan::AttributeContainer
