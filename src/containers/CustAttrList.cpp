// SPDX-License-Identifier: MIT
#include "attributes/AttributeAccess.h"

#include <AttributeContainer/AttrList.h>

#include <utility>

namespace Zorvan::AttributeContainer {

CustAttrList::CustAttrList(std::uint64_t firstToken) : GenAttrList<Attribute>(firstToken) {}

CustAttrList::~CustAttrList() = default;

std::uint64_t CustAttrList::getToken(Attribute const& element) const {
    // The attribute remembers where it was put; that saves an index of the whole list.
    if (auto const* binding = AttributeAccess::customBinding(&element)) {
        std::uint64_t const token = getFirstToken() + AttributeAccess::index(*binding);
        if (getElement(token).get() == &element)
            return token;
    }
    return GenAttrList<Attribute>::getToken(element);
}

std::uint64_t CustAttrList::getToken(std::string const& name) const { return names_.getToken(name); }

std::optional<std::string> CustAttrList::getElementName(std::uint64_t token) { return names_.getName(token); }

std::string const* CustAttrList::findElementName(std::uint64_t token) const { return names_.findName(token); }

bool CustAttrList::hasDistinctNames() const { return names_.size() == size() && !names_.hasRepeatedNames(); }

void CustAttrList::noteIndex(std::uint64_t index) const {
    if (auto* binding = AttributeAccess::customBinding(getElement(getFirstToken() + index).get()))
        AttributeAccess::setIndex(*binding, index);
}

std::weak_ptr<Attribute> CustAttrList::addElement(std::shared_ptr<Attribute>& element,
                                                  std::string const& name) {
    std::uint64_t const index = size();
    std::uint64_t const token = getFirstToken() + index;
    append(element);
    try {
        if (!name.empty() && !names_.add(token, name)) {
            moveLastTo(index);
            return {};
        }
    } catch (...) {
        moveLastTo(index);
        throw;
    }
    noteIndex(index);
    return element;
}

bool CustAttrList::setElement(std::uint64_t token, std::shared_ptr<Attribute>& element,
                              std::string const& name) {
    if (!contains(token))
        return false;
    // The slot is kept: removing it and putting the element back would renumber the last attribute.
    if (auto const* oldName = names_.findName(token))
        names_.remove(token, *oldName);
    if (!name.empty() && !names_.add(token, name))
        return false;
    auto const released = exchange(token - getFirstToken(), element);
    noteIndex(token - getFirstToken());
    return true;
}

std::shared_ptr<Attribute> CustAttrList::takeOut(std::uint64_t token) {
    std::uint64_t const index = token - getFirstToken();
    std::uint64_t const lastToken = getFirstToken() + size() - 1;
    if (auto const* name = names_.findName(token))
        names_.remove(token, *name);
    auto element = exchange(index, nullptr);
    if (token != lastToken)
        names_.moveDown(lastToken, token);
    moveLastTo(index);
    if (token != lastToken)
        noteIndex(index);
    return element;
}

bool CustAttrList::rmElement(std::uint64_t token, bool) {
    if (!contains(token))
        return false;
    auto const released = takeOut(token);
    return true;
}

} // namespace Zorvan::AttributeContainer
