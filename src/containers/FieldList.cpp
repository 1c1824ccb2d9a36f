// SPDX-License-Identifier: MIT
#include "containers/ContainerAccess.h"
#include "containers/TraversalPath.h"

#include <AttributeContainer/AttrList.h>
#include <AttributeContainer/FieldFactory.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <string_view>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

/// The field of a copy: the source's own, or a duplicate. Empty when the source field is being duplicated
/// already further up, as one that is shared with its ancestor is.
std::shared_ptr<AttrContainer> copyField(std::shared_ptr<AttrContainer> const& field, CreateType type) {
    if (type == CreateType::ShareFields || type == CreateType::ShareFieldsAlt)
        return field;
    TraversalPath const path(TraversalPath::copying(), field.get());
    return path.isEntered() ? field->duplicate(type) : nullptr;
}

} // namespace

FieldList::FieldList(std::uint64_t firstToken) : GenAttrList<AttrContainer>(firstToken) {}

FieldList::~FieldList() = default;

std::uint64_t FieldList::getToken(AttrContainer const& element) const {
    return GenAttrList<AttrContainer>::getToken(element);
}

std::uint64_t FieldList::getToken(std::string const& name) const {
    std::uint64_t const token = names_.getToken(name);
    if (token == DataStructures::KeyTable::noToken || token < minCapacity_ || !contains(token))
        return DataStructures::KeyTable::noToken;
    return token;
}

std::optional<std::string> FieldList::getElementName(std::uint64_t token) { return names_.getName(token); }

std::string const* FieldList::findElementName(std::uint64_t token) const { return names_.findName(token); }

bool FieldList::hasDistinctNames() const {
    return names_.size() == size() - minCapacity_ && !names_.hasRepeatedNames() &&
           names_.getToken(std::string_view()) == DataStructures::KeyTable::noToken;
}

bool FieldList::setMinCapacity(std::uint64_t capacity) {
    if (capacity == 0)
        return false;
    grow(capacity);
    minCapacity_ = capacity;
    return true;
}

std::uint64_t FieldList::getMinCapacity() const { return minCapacity_; }

bool FieldList::addElement(std::shared_ptr<AttrContainer> field, std::string const& name) {
    std::uint64_t const token = getFirstToken() + size();
    append(std::move(field));
    try {
        names_.add(token, name);
    } catch (...) {
        moveLastTo(size() - 1);
        throw;
    }
    return true;
}

bool FieldList::setElement(std::uint64_t token, std::shared_ptr<AttrContainer> field) {
    return setElement(token, std::move(field), std::string());
}

bool FieldList::setElement(std::uint64_t token, std::shared_ptr<AttrContainer> field, std::string const&) {
    if (!contains(token))
        return false;
    auto const released = exchange(token - getFirstToken(), std::move(field));
    return true;
}

std::shared_ptr<AttrContainer> FieldList::takeOut(std::uint64_t token, bool compact) {
    if (!contains(token))
        return nullptr;
    std::uint64_t const index = token - getFirstToken();
    auto field = exchange(index, nullptr);
    if (index < minCapacity_)
        return field;
    if (auto const* name = names_.findName(token))
        names_.remove(token, *name);
    if (!compact)
        return field;
    std::uint64_t const lastToken = getFirstToken() + size() - 1;
    if (token != lastToken)
        names_.moveDown(lastToken, token);
    moveLastTo(index);
    return field;
}

bool FieldList::rmElement(std::uint64_t token, bool compact) {
    auto const released = takeOut(token, compact);
    return true;
}

bool FieldList::rmElement(std::shared_ptr<AttrContainer const> field, bool compact) {
    if (!field)
        return false;
    std::uint64_t const token = getToken(*field);
    return token != DataStructures::KeyTable::noToken && rmElement(token, compact);
}

bool FieldList::replaceField(std::shared_ptr<AttrContainer const> oldField,
                             std::shared_ptr<AttrContainer> newField) {
    if (!oldField)
        return false;
    std::uint64_t const token = getToken(*oldField);
    if (token == DataStructures::KeyTable::noToken)
        return false;
    return setElement(token, std::move(newField));
}

bool FieldList::createFields(AttrContainer& container, std::vector<FieldDefinition> const& definitions,
                             CreateType type,
                             std::optional<std::reference_wrapper<AttrContainer const>> source) {
    for (auto const& definition : definitions) {
        if (definition.token >= minCapacity_)
            return false;
        if (getElement(definition.token))
            continue; // The copy from the source has filled it.
        auto field = container.checkCreateChildField(definition.className, definition.name, nullptr);
        FieldList const* sourceFields = source ? ContainerAccess::fields(source->get()) : nullptr;
        std::shared_ptr<AttrContainer> sourceField;
        if (sourceFields)
            sourceField = sourceFields->getElement(definition.token);
        if (!field && sourceField)
            field = copyField(sourceField, type);
        if (!field && !sourceField) {
            field = FieldFactory::the()->createField(definition.className);
            if (field)
                static_cast<void>(
                    field->setName(definition.name, 0)); // A name that is refused is no failure.
        }
        if (!field)
            field = container.checkCreateDefaultChildField(definition.className, definition.name, nullptr);
        if (field) {
            setElement(definition.token, field, definition.name);
            field->informParentAdded(ContainerAccess::shared(container));
        } else if (!definition.className.empty()) {
            return false;
        }
    }
    return true;
}

bool FieldList::createAttrContainer(AttrContainer& owner, FieldList& source, CreateType type) {
    setMinCapacity(source.getMinCapacity());
    for (std::uint64_t i = 0; i < source.size(); ++i) {
        std::uint64_t const token = source.getFirstToken() + i;
        auto const field = source.getElement(token); // Held: duplicating runs foreign code.
        auto copy = field ? copyField(field, type) : nullptr;
        if (!copy) {
            grow(i + 1); // An empty slot, without a name, so that the tokens stay those of the source.
            continue;
        }
        auto const* name = source.findElementName(token);
        if (i < getMinCapacity()) {
            if (!setElement(token, copy))
                return false;
        } else if (!addElement(copy, name ? *name : std::string())) {
            return false;
        }
        copy->informParentAdded(ContainerAccess::shared(owner));
    }
    return true;
}

} // namespace Zorvan::AttributeContainer
