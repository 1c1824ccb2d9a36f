// SPDX-License-Identifier: MIT
#include <AttributeContainer/WtAttrContainer.h>

#include "attributes/AttributeAccess.h"
#include "containers/ContainerAccess.h"
#include "foundation/NeverDestroyed.h"

#include <algorithm>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

using DataStructures::KeyTable;

constexpr char nameOfNameAttribute[] = "Name";
constexpr int noDefinitionCategory = 64;
constexpr int modeSkipNameCheck = 4;
constexpr int modeMakeUnique = 16;

} // namespace

// --- Attributes

std::uint64_t AttrContainer::getAttrToken(Attribute const& attribute) const {
    if (auto const* binding = AttributeAccess::binding(&attribute)) {
        auto const& declared = attributes_.attributes();
        std::uint64_t const index = AttributeAccess::index(*binding);
        if (index < declared.size() && declared[index].get() == &attribute)
            return index;
        if (AttributeAccess::customBinding(&attribute))
            return customAttributes_ ? customAttributes_->getToken(attribute) : KeyTable::noToken;
    }
    auto const& declared = attributes_.attributes();
    for (std::uint64_t token = 0; token < declared.size(); ++token)
        if (declared[token].get() == &attribute)
            return token;
    return KeyTable::noToken;
}

std::uint64_t AttrContainer::getAttrToken(std::string const& attrName) const {
    if (attrName == nameOfNameAttribute)
        return 0;
    return customAttributes_ ? customAttributes_->getToken(attrName) : KeyTable::noToken;
}

std::optional<std::string> AttrContainer::getAttrName(std::uint64_t token) {
    if (token == 0)
        return nameOfNameAttribute;
    return customAttributes_ ? customAttributes_->getElementName(token) : std::nullopt;
}

std::optional<std::string> AttrContainer::getAttrName(std::uint64_t token) const {
    return const_cast<AttrContainer*>(this)->getAttrName(token);
}

AttrDefinition const* AttrContainer::getAttrDefinition(std::uint64_t token) const {
    static auto const& ofName = *new AttrDefinition{0, nameOfNameAttribute, AttrTypeString, 4};
    return token == 0 ? &ofName : nullptr;
}

AttrDefinition const* AttrContainer::getAttrDefinition(Attribute const& attribute) const {
    return getAttrDefinition(getAttrToken(attribute));
}

int AttrContainer::getAttrCategory(Attribute const& attribute) const {
    return getAttrCategory(getAttrToken(attribute));
}

int AttrContainer::getAttrCategory(std::uint64_t token) const {
    auto const* definition = getAttrDefinition(token);
    return definition ? definition->category : noDefinitionCategory;
}

std::shared_ptr<Attribute> const& ContainerAccess::attributeSlot(AttrContainer const& container,
                                                                 std::uint64_t token) {
    static constinit NeverDestroyed<std::shared_ptr<Attribute>> none{std::in_place};
    auto const& declared = container.attributes_.attributes();
    if (token < declared.size())
        return declared[token];
    return container.customAttributes_ ? container.customAttributes_->getElement(token) : none.get();
}

std::shared_ptr<Attribute> ContainerAccess::firstAttribute(AttrContainer const& container) {
    for (auto const& attribute : container.attributes_.attributes())
        if (attribute)
            return attribute;
    auto const* custom = container.customAttributes_.get();
    return custom ? custom->getElement(custom->getFirstToken()) : nullptr;
}

std::weak_ptr<Attribute> AttrContainer::getAttr(std::uint64_t token) {
    return ContainerAccess::attribute(*this, token);
}

std::weak_ptr<Attribute> AttrContainer::getAttr(std::string const& attrName) {
    return getAttr(getAttrToken(attrName));
}

std::weak_ptr<Attribute const> AttrContainer::getAttr(std::uint64_t token) const {
    return ContainerAccess::attribute(*this, token);
}

std::weak_ptr<Attribute const> AttrContainer::getAttr(std::string const& attrName) const {
    return getAttr(getAttrToken(attrName));
}

std::uint64_t AttrContainer::getNumAttributes() const {
    return getNumHardCodedAttributes() + (customAttributes_ ? customAttributes_->size() : 0);
}

std::uint64_t AttrContainer::getNumHardCodedAttributes() const { return attributes_.attributes().size(); }

std::uint64_t AttrContainer::lastAttrToken() const { return 0; }

std::weak_ptr<Attribute> AttrContainer::addAttribute(std::shared_ptr<Attribute> attribute,
                                                     std::string const& attrName) {
    if (!isNameValid(attrName) || !isNameUnique(attrName))
        return {};
    return ContainerAccess::addAttributeUnchecked(*this, attribute, attrName);
}

std::weak_ptr<Attribute> ContainerAccess::addAttributeUnchecked(AttrContainer& container,
                                                                std::shared_ptr<Attribute> const& attribute,
                                                                std::string const& name) {
    auto* binding = AttributeAccess::customBinding(attribute.get());
    if (!binding || AttributeAccess::isMember(*binding))
        return {};
    auto& list = container.customAttributes_;
    if (!list)
        list = std::make_unique<CustAttrList>(container.lastAttrToken() + 1);
    auto element = attribute;
    auto added = list->addElement(element, name);
    if (added.expired()) {
        if (list->size() == 0)
            list.reset();
        return {};
    }
    AttributeAccess::bindMember(*binding, &container);
    return added;
}

bool AttrContainer::rmAttribute(std::string const& attrName) {
    std::uint64_t const token = customAttributes_ ? customAttributes_->getToken(attrName) : KeyTable::noToken;
    if (token == KeyTable::noToken)
        return false;
    ContainerAccess::removeCustomAttribute(*this, token);
    return true;
}

void ContainerAccess::removeCustomAttribute(AttrContainer& container, std::uint64_t token) {
    auto const attribute = container.customAttributes_->takeOut(token);
    if (auto* binding = AttributeAccess::binding(attribute.get()))
        AttributeAccess::bindMember(*binding, nullptr);
}

bool AttrContainer::rmAllCustomAttributes() {
    // Attributes may outlive the list; they have no container then. The list goes last, since what it
    // releases may come back to this container.
    auto const released = std::move(customAttributes_);
    for (std::uint64_t i = 0; released && i < released->size(); ++i)
        if (auto* binding =
                AttributeAccess::binding(released->getElement(released->getFirstToken() + i).get()))
            AttributeAccess::bindMember(*binding, nullptr);
    return true;
}

// --- Fields

FieldList& ContainerAccess::makeFields(AttrContainer& container) {
    if (!container.fields_)
        container.fields_ = std::make_unique<FieldList>(0);
    return *container.fields_;
}

std::uint64_t AttrContainer::getFieldToken(AttrContainer const& field) const {
    return fields_ ? fields_->getToken(field) : KeyTable::noToken;
}

std::uint64_t AttrContainer::getFieldToken(std::string const& fieldName) const {
    return fields_ && !fieldName.empty() ? fields_->getToken(fieldName) : KeyTable::noToken;
}

std::optional<std::string> AttrContainer::getFieldName(std::uint64_t token) {
    return fields_ ? fields_->getElementName(token) : std::nullopt;
}

std::optional<std::string> AttrContainer::getFieldName(std::uint64_t token) const {
    return const_cast<AttrContainer*>(this)->getFieldName(token);
}

std::weak_ptr<AttrContainer> AttrContainer::getField(std::uint64_t token) {
    return fields_ ? fields_->getElement(token) : nullptr;
}

std::weak_ptr<AttrContainer> AttrContainer::getField(std::string const& fieldName) {
    return getField(getFieldToken(fieldName));
}

std::weak_ptr<AttrContainer const> AttrContainer::getField(std::uint64_t token) const {
    return fields_ ? fields_->getElement(token) : nullptr;
}

std::weak_ptr<AttrContainer const> AttrContainer::getField(std::string const& fieldName) const {
    return getField(getFieldToken(fieldName));
}

std::uint64_t AttrContainer::getNumFields() const { return fields_ ? fields_->size() : 0; }

std::uint64_t AttrContainer::lastFieldToken() const { return 0xFFFFFFFF; }

bool AttrContainer::addField(std::shared_ptr<AttrContainer> field, std::string const& fieldName, int mode) {
    if (!field || field.get() == this)
        return false;
    std::string entryName = fieldName.empty() ? field->getName() : fieldName;
    if (!(mode & modeSkipNameCheck) && !isNameUnique(entryName)) {
        if (!(mode & modeMakeUnique))
            return false;
        entryName = generateUniqueName(entryName);
    }
    auto const self = ContainerAccess::shared(*this);
    ContainerAccess::makeFields(*this).addElement(field, entryName);
    field->informParentAdded(self);
    return true;
}

bool AttrContainer::setField(std::uint64_t token, std::shared_ptr<AttrContainer> field) {
    if (!field || field.get() == this || !fields_ || token < fields_->getFirstToken() ||
        token - fields_->getFirstToken() >= fields_->size())
        return false;
    auto const self = ContainerAccess::shared(*this);
    auto const previous = fields_->getElement(token);
    if (previous) {
        previous->informParentRemoved(self);
        // The hook is foreign code, which may have moved the slot.
        if (fields_->getElement(token) != previous)
            token = fields_->getToken(*previous);
    }
    if (!fields_->setElement(token, field))
        return false;
    forgetNames();
    field->informParentAdded(self);
    return true;
}

bool AttrContainer::replaceField(std::shared_ptr<AttrContainer> oldField,
                                 std::shared_ptr<AttrContainer> newField) {
    if (!oldField || !newField || newField.get() == this || !fields_ ||
        !fields_->replaceField(oldField, newField))
        return false;
    auto const self = ContainerAccess::shared(*this);
    forgetNames();
    oldField->informParentRemoved(self);
    newField->informParentAdded(self);
    return true;
}

bool AttrContainer::rmField(std::uint64_t token) {
    if (!fields_)
        return false;
    auto const self = std::static_pointer_cast<AttrContainer>(weak_from_this().lock());
    auto const field = fields_->getElement(token);
    if (field)
        field->informParentRemoved(self);
    // The hook is foreign code, which may have moved the field or removed it already.
    if (field && fields_->getElement(token) != field)
        token = fields_->getToken(*field);
    auto const released = token == KeyTable::noToken ? nullptr : fields_->takeOut(token, true);
    forgetNames();
    return true;
}

bool AttrContainer::rmField(std::string const& fieldName) {
    std::uint64_t const token = getFieldToken(fieldName);
    return token != KeyTable::noToken && rmField(token);
}

bool AttrContainer::rmField(std::shared_ptr<AttrContainer> field) {
    std::uint64_t const token = field ? getFieldToken(*field) : KeyTable::noToken;
    return token != KeyTable::noToken && rmField(token);
}

bool AttrContainer::rmAllCustomFields() {
    std::uint64_t const last = lastFieldToken();
    for (std::uint64_t size = getNumFields(); size > last + 1;) {
        rmField(size - 1);
        // At least one goes in each round, whatever the hooks do.
        size = std::min(getNumFields(), size - 1);
    }
    return true;
}

std::shared_ptr<AttrContainer> AttrContainer::checkCreateChildField(std::string const&, std::string const&,
                                                                    std::uint64_t*) {
    return nullptr;
}

std::shared_ptr<AttrContainer>
AttrContainer::checkCreateDefaultChildField(std::string const&, std::string const&, std::uint64_t*) {
    return nullptr;
}

void AttrContainer::informParentAdded(std::shared_ptr<AttrContainer>) {}

bool AttrContainer::informParentRemoved(std::shared_ptr<AttrContainer>) { return false; }

std::optional<std::string> AttrContainer::getFieldRegistryPrefix(AttrContainer const& field) {
    auto prefix = getFieldName(getFieldToken(field));
    if (prefix && prefix->empty())
        prefix = field.getName();
    return prefix;
}

} // namespace Zorvan::AttributeContainer
