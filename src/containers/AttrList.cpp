// SPDX-License-Identifier: MIT
#include <AttributeContainer/AttrList.h>

#include "attributes/AttributeAccess.h"

#include <stdexcept>

namespace Zorvan::AttributeContainer {

AttrList::AttrList(AttrContainer& owner) : owner_(owner) {}

AttrList::~AttrList() = default;

bool AttrList::createAttributes(std::vector<AttrDefinition> const& definitions, CreateType,
                                AttrList const* source) {
    std::size_t const size = attributes_.size() + definitions.size();
    // A token that has no slot, or a slot that is taken, is a mistake of the class: nothing is made then.
    std::vector<bool> isTaken(size, false);
    for (std::size_t i = 0; i < attributes_.size(); ++i)
        isTaken[i] = true;
    for (auto const& definition : definitions) {
        if (definition.token >= size || isTaken[definition.token])
            return false;
        isTaken[definition.token] = true;
    }
    attributes_.resize(size);
    for (auto const& definition : definitions) {
        auto attribute = AttributeAccess::make(definition, &owner_);
        if (attribute) {
            auto* binding = dynamic_cast<AttributeBinding*>(attribute.get());
            AttributeAccess::bindMember(*binding, &owner_);
            AttributeAccess::setIndex(*binding, definition.token);
        }
        if (source) {
            if (definition.token >= source->attributes_.size())
                throw std::out_of_range("invalid vector subscript");
            auto const& original = source->attributes_[definition.token];
            if (attribute && original)
                AttributeAccess::takeFrom(*attribute, *original);
        }
        attributes_[definition.token] = std::move(attribute);
    }
    return true;
}

} // namespace Zorvan::AttributeContainer
