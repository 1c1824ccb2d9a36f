// SPDX-License-Identifier: MIT
#include <AttributeContainer/AttrList.h>

#include "attributes/AttributeAccess.h"

#include <AttributeContainer/WtAttrContainer.h>

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
    if (size > attributes_.capacity()) {
        // What derived classes declare comes next: the list is to grow once for all of them. What a class
        // says of its last token is not to cost more memory than it can be worth.
        constexpr std::uint64_t mostAhead = 256;
        std::uint64_t const last = owner_.lastAttrToken();
        attributes_.reserve(last >= size && last - size < mostAhead ? static_cast<std::size_t>(last + 1)
                                                                    : size);
    }
    attributes_.resize(size);
    for (auto const& definition : definitions) {
        if (source && definition.token >= source->attributes_.size())
            throw std::out_of_range("invalid vector subscript");
        auto const* original = source ? source->attributes_[definition.token].get() : nullptr;
        auto attribute = original ? AttributeAccess::makeMember(definition, owner_, *original)
                                  : AttributeAccess::makeMember(definition, owner_);
        if (attribute)
            AttributeAccess::setIndex(*AttributeAccess::binding(attribute.get()), definition.token);
        attributes_[definition.token] = std::move(attribute);
    }
    return true;
}

} // namespace Zorvan::AttributeContainer
