// SPDX-License-Identifier: MIT
#pragma once

#include "attributes/AttributeSwitches.h"
#include "observation/ObservationAccess.h"

#include <AttributeContainer/AttrDefinition.h>

#include <cstdint>
#include <memory>
#include <typeinfo>

namespace Zorvan::AttributeContainer {

/// What the library's own lists, readers and copies do to attributes beyond the public interface.
class AttributeAccess {
public:
    static void setWriteFlag(Attribute& attribute, bool on) { attribute.state_.write = on ? 1 : 0; }
    static void setCategoryFlag(Attribute& attribute) { attribute.state_.categoryFlag = 1; }
    /// From now on the attribute's container is told when a value is stored.
    static void setTellsOwner(Attribute& attribute) { attribute.state_.tellsOwner = 1; }
    static bool tellsOwner(Attribute const& attribute) { return attribute.state_.tellsOwner != 0; }
    static void valueStored(Attribute& attribute) { attribute.valueStored(); }
    static std::type_info const& proposedValueType(Attribute const& attribute) {
        return attribute.proposedValueType();
    }

    /// Appends the value if that is all that the attribute writes of itself. False: nothing was appended.
    static bool appendPlainValue(LineWriter& line, Attribute const& attribute, bool withInitialValues);

    /// Whether two attributes of one type have the same value within the tolerance that their type has.
    static bool isWithinTolerance(Attribute const& attribute, Attribute const& other) {
        return attribute.isWithinTolerance(other);
    }

    /// The cached attribute that is attached, while the thread's switch says that one is pending; else empty.
    static std::shared_ptr<Attribute> cachedAttribute(Attribute const& attribute,
                                                      NotifyingThread const& thread = notifyingThread) {
        return (thread.attributeSwitches & CachedAttributePending) != 0 ? findCachedAttribute(attribute)
                                                                        : nullptr;
    }
    /// Ends the staging: detaches the info and clears the switch, if it is set and there is an info, which
    /// the caller releases when it needs nothing of it any more.
    static std::shared_ptr<ObserverInfo>
    takeCachedAttribute(Attribute& attribute, NotifyingThread const& thread = notifyingThread) {
        return (thread.attributeSwitches & CachedAttributePending) != 0 ? removeCachedAttribute(attribute)
                                                                        : nullptr;
    }

    static AttrContainer const* container(AttributeBinding const& binding) { return binding.container(); }
    /// The binding of an attribute; null for none.
    static AttributeBinding* binding(Attribute const* attribute) {
        return attribute ? const_cast<Attribute*>(attribute)->binding() : nullptr;
    }
    /// The same for a custom attribute; null for any other.
    static CustomAttribute* customBinding(Attribute const* attribute) {
        auto* const any = binding(attribute);
        return any && any->isCustom_ ? static_cast<CustomAttribute*>(any) : nullptr;
    }
    static std::uint64_t index(AttributeBinding const& binding) { return binding.index_; }
    static void setIndex(AttributeBinding& binding, std::uint64_t index) {
        binding.index_ = static_cast<std::uint32_t>(index);
    }
    /// A container's list holds the attribute, whatever location it was given since.
    static bool isMember(AttributeBinding const& binding) { return binding.isMember_; }
    /// The attribute is a member of the container, which clears the binding when either goes.
    static void bindMember(AttributeBinding& binding, AttrContainer const* container) {
        if (binding.isGuarded_)
            binding.unbind();
        binding.container_ = container;
        binding.isMember_ = container != nullptr;
    }
    /// The types that share an attribute class with another one, as that one.
    static AttrType attributeClassOf(AttrType type) {
        switch (type) {
        case AttrTypeInt32:
            return AttrTypeInt;
        case AttrTypeInt32Vector:
            return AttrTypeIntVector;
        case AttrTypeUIntVector:
            return AttrTypeUInt32Vector;
        default:
            return type;
        }
    }
    /// A new attribute of the definition's type without a source: bound to `owner`, or a custom attribute.
    /// Empty for a type without an attribute class.
    static std::shared_ptr<Attribute> make(AttrDefinition const& definition, AttrContainer const* owner);
    /// The same as a member of `owner`: the caller keeps it in the owner's list.
    static std::shared_ptr<Attribute> makeMember(AttrDefinition const& definition,
                                                 AttrContainer const& owner);
    /// The same with the value and the persistent links of `source`.
    static std::shared_ptr<Attribute> makeMember(AttrDefinition const& definition, AttrContainer const& owner,
                                                 Attribute const& source);
    /// The attribute as one of value type `T`; null when it is of another type.
    template <class T>
    static Attr<T> const* cast(Attribute const* attribute) {
        return attribute && proposedValueType(*attribute) == typeid(NewValueInfo<T>)
                   ? static_cast<Attr<T> const*>(attribute)
                   : nullptr;
    }
    static bool hasLinks(Attribute const& attribute) { return ObservationAccess::hasLinks(attribute); }
    /// Gives an attribute inactive copies of the persistent links of `source`.
    static void copyLinks(Attribute& attribute, Attribute const& source);
    /// Gives a new attribute the value and the persistent links of `source`.
    static void takeFrom(Attribute& attribute, Attribute const& source);
    /// Gives a location, or none, which says nothing about membership.
    static void bindGuarded(AttributeBinding& binding, AttrContainer const& container);
    static void unbind(AttributeBinding& binding);

    template <class T>
    static AttrVal<T>& holder(Attr<T>& attribute) {
        return attribute.holder_;
    }
    template <class T>
    static AttrVal<T> const& holder(Attr<T> const& attribute) {
        return attribute.holder_;
    }

private:
    static std::shared_ptr<Attribute> findCachedAttribute(Attribute const& attribute);
    static std::shared_ptr<ObserverInfo> removeCachedAttribute(Attribute& attribute);
};

} // namespace Zorvan::AttributeContainer
