// SPDX-License-Identifier: MIT
#include <AttributeContainer/Object.h>

#include "attributes/AttributeAccess.h"
#include "containers/ClassTables.h"
#include "platform/Guid.h"

#include <AttributeContainer/BlockUpdateObservers.h>
#include <AttributeContainer/FallbackObject.h>

#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

using DataStructures::KeyTable;

enum Token : std::uint64_t { ActionToken = 1, EventToken, MajorVersionToken, MinorVersionToken, UuidToken };

constexpr int flagSkipNameCheck = 4;
constexpr int flagMakeUnique = 16;

ClassTables const& tables() {
    static auto const& tables = *new ClassTables({{ActionToken, "Action", AttrTypeString, 18},
                                                  {EventToken, "Event", AttrTypeString, 18},
                                                  {MajorVersionToken, "MajorVersion", AttrTypeUInt16, 18},
                                                  {MinorVersionToken, "MinorVersion", AttrTypeUInt16, 18},
                                                  {UuidToken, "UUID", AttrTypeUuid, 18}});
    return tables;
}

template <class T>
T valueOf(AttrContainer const& container, std::uint64_t token) {
    auto const attribute = ContainerAccess::attribute(container, token);
    auto const* typed = AttributeAccess::cast<T>(attribute.get());
    return typed ? typed->getValue() : T();
}

} // namespace

// --- Creation

Object::Object(ConstructorProtector const& protector, CreateType type, OptionalSource source)
    : AttrContainer(protector, type, source ? AttrContainer::OptionalSource(source->get()) : std::nullopt) {}

Object::~Object() = default;

std::shared_ptr<Object> Object::create(CreateType type, OptionalSource source) {
    // Hooks of copied fields may let go of the source.
    auto const held = source ? ObservationAccess::hold(source->get()) : nullptr;
    auto object = std::make_shared<Object>(ConstructorProtector(), type, source);
    object->init(type, source);
    return object;
}

std::shared_ptr<AttrContainer> Object::duplicate(CreateType type) {
    return create(type, type == CreateType::Blank ? std::nullopt : OptionalSource(*this));
}

void Object::init(CreateType type, OptionalSource source) {
    AttrContainer::OptionalSource const base =
        source ? AttrContainer::OptionalSource(source->get()) : std::nullopt;
    if (!source) {
        AttrContainer::init(type, base);
        createAttributes(tables().definitions(), type, base);
        // A class whose name is no valid name starts without one; others have it by now, as a rule.
        if (std::string const& className = getClassName(); Attr_name().getValue() != className)
            static_cast<void>(setName(className, 0));
        return;
    }
    BlockUpdateObservers const scope(ContainerAccess::shared(*this));
    AttrContainer::init(type, base);
    createAttributes(tables().definitions(), type, base);
}

std::string const& Object::getStaticClassName() {
    static std::string const& name = *new std::string("Object");
    return name;
}

std::string const& Object::getClassName() const { return getStaticClassName(); }

// --- Declared attributes

Attr<std::string>& Object::Attr_Action() { return attrAt<std::string>(ActionToken); }
Attr<std::string> const& Object::Attr_Action() const { return attrAt<std::string>(ActionToken); }
std::string const& Object::Action() const { return Attr_Action().getValue(); }
void Object::Action(std::string const& value) { Attr_Action().setValue(value); }

Attr<std::string>& Object::Attr_Event() { return attrAt<std::string>(EventToken); }
Attr<std::string> const& Object::Attr_Event() const { return attrAt<std::string>(EventToken); }
std::string const& Object::Event() const { return Attr_Event().getValue(); }
void Object::Event(std::string const& value) { Attr_Event().setValue(value); }

Attr<unsigned short>& Object::Attr_MajorVersion() { return attrAt<unsigned short>(MajorVersionToken); }
Attr<unsigned short> const& Object::Attr_MajorVersion() const {
    return attrAt<unsigned short>(MajorVersionToken);
}
unsigned short const& Object::MajorVersion() const { return Attr_MajorVersion().getValue(); }
void Object::MajorVersion(unsigned short const& value) { Attr_MajorVersion().setValue(value); }

Attr<unsigned short>& Object::Attr_MinorVersion() { return attrAt<unsigned short>(MinorVersionToken); }
Attr<unsigned short> const& Object::Attr_MinorVersion() const {
    return attrAt<unsigned short>(MinorVersionToken);
}
unsigned short const& Object::MinorVersion() const { return Attr_MinorVersion().getValue(); }
void Object::MinorVersion(unsigned short const& value) { Attr_MinorVersion().setValue(value); }

Attr<uuids::uuid>& Object::Attr_UUID() { return attrAt<uuids::uuid>(UuidToken); }
Attr<uuids::uuid> const& Object::Attr_UUID() const { return attrAt<uuids::uuid>(UuidToken); }
uuids::uuid const& Object::UUID() const { return Attr_UUID().getValue(); }
void Object::UUID(uuids::uuid const& value) { Attr_UUID().setValue(value); }

uuids::uuid Object::getUuid() {
    uuids::uuid const stored = UUID();
    if (!stored.isNil())
        return stored;
    Guid guid{};
    if (!createGuid(guid))
        return stored;
    uuids::uuid const made = toUuid(guid);
    UUID(made);
    return made;
}

uuids::uuid Object::getUuid() const { return valueOf<uuids::uuid>(*this, UuidToken); }

void Object::setUuid(uuids::uuid const& value) { UUID(value); }

ClassVersion Object::getStoredClassVersion() const {
    return {valueOf<unsigned short>(*this, MajorVersionToken),
            valueOf<unsigned short>(*this, MinorVersionToken)};
}

void Object::setClassVersion(ClassVersion const& classVersion) {
    std::uint32_t const minorNumber = classVersion.minor; // The argument may go with what observers do.
    auto const self = weak_from_this().lock();
    MajorVersion(static_cast<unsigned short>(classVersion.major & 0xFFFF));
    MinorVersion(static_cast<unsigned short>(minorNumber & 0xFFFF));
}

std::uint64_t Object::getAttrToken(std::string const& attrName) const {
    std::uint64_t const token = tables().names().getToken(attrName);
    return token != KeyTable::noToken ? token : AttrContainer::getAttrToken(attrName);
}

std::optional<std::string> Object::getAttrName(std::uint64_t token) {
    auto const* attrName = tables().names().findName(token);
    return attrName ? *attrName : AttrContainer::getAttrName(token);
}

AttrDefinition const* Object::getAttrDefinition(std::uint64_t token) const {
    auto const* definition = tables().definition(token);
    return definition ? definition : AttrContainer::getAttrDefinition(token);
}

std::uint64_t Object::lastAttrToken() const { return UuidToken; }

// --- Children

bool Object::addChild(std::shared_ptr<Object> child, int flags) {
    if (!child || child.get() == this)
        return false;
    auto const self = std::static_pointer_cast<Object>(shared_from_this());
    // Asked after each step that runs foreign code, which may have put the child, or this object, elsewhere.
    auto const isFree = [this, &child] {
        if (child->getParent())
            return false;
        // Only an object that has children can be an ancestor of this one.
        if (child->children_.getNumChildren() != 0)
            for (auto ancestor = getParent(); ancestor; ancestor = ancestor->getParent())
                if (ancestor == child)
                    return false;
        return true;
    };
    if (!acceptChild(*child, flags) && !dynamic_cast<FallbackObject*>(child.get()))
        return false;
    if (!child->acceptParent(*this) || !isFree())
        return false;
    if (!(flags & flagSkipNameCheck) && !isNameUnique(child->getName())) {
        if (!(flags & flagMakeUnique))
            return false;
        static_cast<void>(child->setName(generateUniqueName(child->getName()), 1));
        if (!isFree())
            return false;
    }
    children_.add(child);
    child->parent_ = self;
    return true;
}

bool Object::removeChild(std::shared_ptr<Object> const& child) {
    if (!child)
        return false;
    if (child->parent_.lock().get() == this)
        child->parent_.reset();
    ContainerAccess::forgetNames(*this);
    return true;
}

bool Object::rmChild(Object& child, int) {
    auto const removed = children_.takeOut(child);
    return removeChild(removed);
}

bool Object::rmChild(std::uint64_t index, int) {
    auto const removed = children_.takeOut(index);
    return removeChild(removed);
}

bool Object::acceptChild(Object&, int) { return true; }
bool Object::acceptParent(Object&) { return true; }
bool Object::hasNothingPreserved() { return true; }

void Object::nameStored() {
    if (auto const parent = getParent()) {
        parent->children_.nameChanged(*this);
        ContainerAccess::forgetNames(*parent);
    }
}

} // namespace Zorvan::AttributeContainer
