// SPDX-License-Identifier: MIT
#include <AttributeContainer/AttrDefinition.h>

#include "attributes/AttrTypeList.h"
#include "attributes/AttributeAccess.h"
#include "attributes/ContainerLink.h"

#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

struct Unbound {};

template <class T>
std::shared_ptr<Attribute> makeAttr(Unbound) {
    return std::make_shared<CustAttr<T>>();
}

template <class T, class Owner>
std::shared_ptr<Attribute> makeAttr(Owner const& owner) {
    return std::make_shared<HardCodedAttr<T>>(owner);
}

/// A member of a container that is copied, and its counterpart.
struct CopyOf {
    MemberOf owner;
    Attribute const& source;
};

// Nobody knows the new attribute: its value needs no change that others could be told of.
template <class T>
std::shared_ptr<Attribute> makeAttr(CopyOf const& copy) {
    auto made = std::make_shared<HardCodedAttr<T>>(copy.owner);
    if (auto const* typed = AttributeAccess::cast<T>(&copy.source))
        AttributeAccess::holder<T>(*made).get() = typed->getValue();
    else
        static_cast<Attribute&>(*made) = copy.source;
    return made;
}

template <class Owner>
std::shared_ptr<Attribute> makeAttrOf(AttrDefinition const& definition, Owner const& owner) {
    switch (AttributeAccess::attributeClassOf(definition.type)) {
    case AttrTypeScanPt:
    case AttrTypeScanPtVector:
        return nullptr; // Only applications make these.
#define KX_MAKE(number, name, ...)                                                                           \
    case number:                                                                                             \
        return makeAttr<__VA_ARGS__>(owner);
        KX_ATTR_TYPES_NUMBERS(KX_MAKE)
        KX_ATTR_TYPES_COLLECTIONS(KX_MAKE)
        KX_ATTR_TYPES_PLAIN_GEOMETRY(KX_MAKE)
        KX_ATTR_TYPES_PLAIN_GEOMETRY_COLLECTIONS(KX_MAKE)
#undef KX_MAKE
    default:
        return nullptr;
    }
}

template <class Owner>
std::shared_ptr<Attribute> makeOfType(AttrDefinition const& definition, Owner const& owner) {
    auto attribute = makeAttrOf(definition, owner);
    if (attribute && (definition.category & 2) != 0)
        AttributeAccess::setCategoryFlag(*attribute);
    return attribute;
}

} // namespace

std::shared_ptr<Attribute> AttributeAccess::make(AttrDefinition const& definition,
                                                 AttrContainer const* owner) {
    return owner ? makeOfType(definition, *owner) : makeOfType(definition, Unbound());
}

std::shared_ptr<Attribute> AttributeAccess::makeMember(AttrDefinition const& definition,
                                                       AttrContainer const& owner) {
    return makeOfType(definition, MemberOf(owner));
}

std::shared_ptr<Attribute> AttributeAccess::makeMember(AttrDefinition const& definition,
                                                       AttrContainer const& owner, Attribute const& source) {
    auto attribute = makeOfType(definition, CopyOf{MemberOf(owner), source});
    if (attribute)
        copyLinks(*attribute, source);
    return attribute;
}

void AttributeAccess::copyLinks(Attribute& attribute, Attribute const& source) {
    if (hasLinks(source))
        attribute.copyFrom(source);
}

void AttributeAccess::takeFrom(Attribute& attribute, Attribute const& source) {
    attribute = source;
    copyLinks(attribute, source);
}

std::shared_ptr<Attribute>
AttrDefinition::createAttr(CreateType, std::optional<std::reference_wrapper<Attribute const>> source,
                           std::optional<std::reference_wrapper<AttrContainer const>> owner) const {
    auto attribute = AttributeAccess::make(*this, owner ? &owner->get() : nullptr);
    if (!attribute || !source)
        return attribute;
    AttributeAccess::takeFrom(*attribute, source->get());
    if (!owner)
        if (auto* custom = AttributeAccess::customBinding(attribute.get()))
            custom->setLocation(source->get().getLocation());
    return attribute;
}

// --- Bindings

struct AttributeBinding::Guarded {
    AttrContainer const* container;
    std::weak_ptr<ObservingObject const> guard;
};

AttrContainer const* AttributeBinding::container() const {
    if (!isGuarded_)
        return container_;
    return guarded_->guard.expired() ? nullptr : guarded_->container;
}

void AttributeBinding::unbind() {
    if (isGuarded_)
        delete guarded_;
    isGuarded_ = false;
    container_ = nullptr;
}

void AttributeAccess::bindGuarded(AttributeBinding& binding, AttrContainer const& container) {
    auto* const guarded =
        new AttributeBinding::Guarded{&container, ContainerLink::asObserver(container).weak_from_this()};
    binding.unbind();
    binding.guarded_ = guarded;
    binding.isGuarded_ = true;
}

void AttributeAccess::unbind(AttributeBinding& binding) { binding.unbind(); }

HardCodedAttribute::HardCodedAttribute(AttrContainer const& owner) {
    AttributeAccess::bindGuarded(*this, owner);
}

HardCodedAttribute::HardCodedAttribute(MemberOf const& owner) {
    container_ = &owner.owner_;
    isMember_ = true;
}

CustomAttribute::CustomAttribute() { isCustom_ = true; }

void CustomAttribute::setLocation(std::optional<std::reference_wrapper<AttrContainer const>> location) {
    auto const* container = location ? &location->get() : nullptr;
    if (container)
        AttributeAccess::bindGuarded(*this, *container);
    else
        AttributeAccess::unbind(*this);
}

} // namespace Zorvan::AttributeContainer
