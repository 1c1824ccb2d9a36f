// SPDX-License-Identifier: MIT
#include "attributes/AttributeReading.h"

#include "attributes/AttrTypeList.h"
#include "attributes/AttributeAccess.h"
#include "attributes/AttributeSwitches.h"
#include "serialization/ValueReader.h"

#include <cstddef>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

namespace {

template <class T>
T& valueOf(Attribute& attribute) {
    return AttributeAccess::holder(static_cast<Attr<T>&>(attribute)).get();
}

struct Read {
    AreaReader& in;
    ModelFormat::Format format;

    template <class T>
    bool operator()(Attribute& read) const {
        ValueReader(in, format).read(valueOf<T>(read));
        return in.good();
    }
};

struct Reset {
    template <class T>
    bool operator()(Attribute& read) const {
        valueOf<T>(read) = T{};
        return true;
    }
};

/// Up to this size, in bytes, a copy costs less than the memory that the next value would have to get anew,
/// piece by piece.
constexpr std::size_t maxCopied = 1024;

template <class T>
void give(T& target, T& value) {
    target = std::move(value);
}

void give(std::string& target, std::string& value) {
    if (value.size() <= maxCopied)
        target = value;
    else
        target = std::move(value);
}

template <class T>
requires std::is_trivially_copyable_v<T>
void give(std::vector<T>& target, std::vector<T>& value) {
    if (value.size() <= maxCopied / sizeof(T))
        target = value;
    else
        target = std::move(value);
}

struct Take {
    Attribute& existing;

    template <class T>
    bool operator()(Attribute& read) const {
        std::type_info const& type = typeid(existing);
        if (type != typeid(HardCodedAttr<T>) && type != typeid(CustAttr<T>))
            return false;
        give(valueOf<T>(existing), valueOf<T>(read));
        return true;
    }
};

template <class Operation>
bool forType(AttrType type, Attribute& read, Operation const& operation) {
    switch (AttributeAccess::attributeClassOf(type)) {
#define KX_APPLY(number, name, ...)                                                                          \
    case number:                                                                                             \
        return operation.template operator()<__VA_ARGS__>(read);
        KX_ATTR_TYPES_NUMBERS(KX_APPLY)
        KX_ATTR_TYPES_COLLECTIONS(KX_APPLY)
        KX_ATTR_TYPES_PLAIN_GEOMETRY(KX_APPLY)
        KX_ATTR_TYPES_PLAIN_GEOMETRY_COLLECTIONS(KX_APPLY)
#undef KX_APPLY
    default:
        return false;
    }
}

} // namespace

bool AttributeReading::readValue(AttrType type, Attribute& read, AreaReader& in, ModelFormat::Format format) {
    return forType(type, read, Read{in, format});
}

void AttributeReading::resetValue(AttrType type, Attribute& read) { forType(type, read, Reset{}); }

bool AttributeReading::takeValue(AttrType type, Attribute& existing, Attribute& read) {
    NotifyingThread const& thread = notifyingThread;
    if (thread.attributeSwitches != 0 || thread.notes != nullptr ||
        ObservationAccess::hasPostObservers(existing) || AttributeAccess::hasLinks(read))
        return false;
    if (!forType(type, read, Take{existing}))
        return false;
    bool const tellsOwner = AttributeAccess::tellsOwner(existing);
    auto const held = tellsOwner ? existing.weak_from_this().lock() : nullptr;
    if (tellsOwner)
        AttributeAccess::valueStored(existing);
    AttributeAccess::setWriteFlag(existing, read.getFlags().write != 0);
    existing.setMarked(read.isMarked());
    if (tellsOwner || ObservationAccess::hasPreObservers(existing))
        existing.touch(nullptr, nullptr);
    return true;
}

} // namespace Zorvan::AttributeContainer
