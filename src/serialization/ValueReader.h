// SPDX-License-Identifier: MIT
#pragma once

#include "serialization/AreaReader.h"
#include "serialization/CharReader.h"
#include "serialization/NumberReader.h"
#include "serialization/QuotedText.h"

#include <AttributeContainer/ModelFormat.h>
#include <AttributeContainer/Statistics.h>
#include <AttributeContainer/Time.h>
#include <AttributeContainer/Uuid.h>
#include <AttributeContainer/ValueTypes.h>
#include <AttributeContainer/Version.h>

#include <array>
#include <concepts>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

/// Reads values of all types. Containers and the composed types are built from the overloads for their parts.
/// Whatever does not parse fails the stream, and every loop ends when the stream fails. A `Reader` is a
/// CharReader or an AreaReader, which must outlive the value reader.
template <class Reader>
class ValueReader {
public:
    ValueReader(Reader& in, ModelFormat::Format format) noexcept : in_(in), format_(format) {}

    void read(bool& value);
    void read(signed char& value);
    void read(unsigned char& value);

    template <std::integral T>
    void read(T& value) {
        value = readInteger<T>(in_);
    }

    template <std::floating_point T>
    void read(T& value) {
        value = readFloat<T>(in_);
    }

    void read(std::string& value) { readQuoted(in_, format_, value); }
    void read(uuids::uuid& value);

    template <class T>
    void read(SVec2d<T>& value) {
        readComponents(value);
    }

    template <class T>
    void read(SVec3d<T>& value) {
        readComponents(value);
    }

    template <class T>
    void read(Vec3d<T>& value) {
        readComponents(value);
    }

    template <class T>
    void read(Vec4d<T>& value) {
        readComponents(value);
    }

    template <class T>
    void read(Mat4d<T>& value) {
        readComponents(value);
    }

    void read(Vec4d<unsigned char>& value);
    void read(ScanPtColor<Vec3d<float>>& value);
    void read(StatisticVal<double>& value);
    void read(StatisticValLimits<double>& value);
    void read(Time& value);
    void read(VersionNum& value);
    void read(std::map<std::string, std::string>& value);
    void read(std::vector<std::string>& value);
    void read(std::set<std::string>& value);

    template <class T>
    void read(std::vector<T>& value) {
        value.clear();
        readCollection<T>([&value](T&& element) { value.push_back(std::move(element)); });
    }

    template <class T>
    void read(std::set<T>& value) {
        value.clear();
        readCollection<T>([&value](T&& element) { value.insert(value.end(), std::move(element)); });
    }

private:
    template <class T>
    T readSmall();
    /// Calls `use` with the word that makes up a value.
    template <class Use>
    void withWord(Use use);

    template <class Vector>
    void readComponents(Vector& value) {
        for (auto& component : value)
            read(component);
    }

    /// Any character, and then elements up to a closing brace. In a value attribute the quote that ends it
    /// ends the collection, too, and stays; an attribute without a text is an empty collection.
    template <class T, class Add>
    void readCollection(Add add) {
        in_.skipSpace();
        if (atEndOfAttribute())
            return;
        in_.get();
        while (!endOfCollection()) {
            T element{};
            read(element);
            if (in_.failed())
                return;
            add(std::move(element));
        }
    }

    bool endOfCollection();
    bool atEndOfAttribute();
    std::uint64_t readCount();
    bool atListedString();
    void readWords(std::vector<std::string>& value);
    void readStatistic(std::array<double, 4>& values);
    void skipCharacter();
    void skipComment();

    Reader& in_;
    ModelFormat::Format format_;
};

} // namespace Zorvan::AttributeContainer
