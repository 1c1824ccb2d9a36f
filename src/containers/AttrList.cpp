// SPDX-License-Identifier: MIT
#include <AttributeContainer/AttrList.h>

#include "attributes/AttributeAccess.h"

#include <algorithm>
#include <stdexcept>

namespace Zorvan::AttributeContainer {

AttrList::AttrList(AttrContainer& owner) : owner_(owner) {}

AttrList::~AttrList() = default;

bool AttrList::createAttributes(std::vector<AttrDefinition> const& definitions, CreateType,
                                AttrList const* source) {
    std::size_t const size = attributes_.size() + definitions.size();
    // A token that has no slot, or a slot that is taken, is a mistake of the class: nothing is made then.
    std::vector<bool> isTaken;
    for (std::size_t i = 0; i < definitions.size(); ++i) {
        std::uint64_t const token = definitions[i].token;
        if (isTaken.empty() && token == attributes_.size() + i)
            continue; // The usual order, in which no token comes twice.
        if (isTaken.empty()) {
            isTaken.resize(size);
            std::fill_n(isTaken.begin(), attributes_.size() + i, true);
        }
        if (token >= size || isTaken[token])
            return false;
        isTaken[token] = true;
    }
    attributes_.resize(size);
    for (auto const& definition : definitions) {
        auto attribute = AttributeAccess::makeMember(definition, owner_);
        if (attribute)
            AttributeAccess::setIndex(*AttributeAccess::binding(attribute.get()), definition.token);
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
