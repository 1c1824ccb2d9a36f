// SPDX-License-Identifier: MIT
#include <AttributeContainer/AttrContComparer.h>

#include "attributes/AttributeAccess.h"
#include "containers/ContainerAccess.h"
#include "containers/TraversalPath.h"
#include "traversal/NameMatcher.h"

#include <algorithm>
#include <memory>
#include <typeinfo>

namespace Zorvan::AttributeContainer {

namespace {

using OptionalContainer = AttrContComparer::OptionalContainer;

OptionalContainer optional(std::shared_ptr<AttrContainer> const& container) {
    return container ? OptionalContainer(*container) : std::nullopt;
}

/// How many attributes from the first on are alike in two containers of one class: same name, equal value.
/// For most containers of most trees these are all; nothing is looked up, stored or held for them.
std::uint64_t numEqualAtFront(AttrContainer const& first, AttrContainer const& second) {
    if (typeid(first) != typeid(second))
        return 0;
    auto const& a = ContainerAccess::declared(first);
    auto const& b = ContainerAccess::declared(second);
    std::uint64_t numEqual = 0;
    while (numEqual < a.size() && numEqual < b.size() && a[numEqual] && b[numEqual] &&
           !a[numEqual]->isDifferent(*b[numEqual]))
        ++numEqual;
    auto const* customA = ContainerAccess::custom(first);
    auto const* customB = ContainerAccess::custom(second);
    if (numEqual < a.size() || numEqual < b.size() || !customA || !customB)
        return numEqual;
    std::uint64_t const numSameNames =
        DataStructures::KeyTable::numSameNames(ContainerAccess::names(*customA), customA->getFirstToken(),
                                               ContainerAccess::names(*customB), customB->getFirstToken());
    auto const& elementsA = ContainerAccess::elements(*customA);
    auto const& elementsB = ContainerAccess::elements(*customB);
    for (std::uint64_t i = 0; i < numSameNames && i < elementsA.size() && i < elementsB.size();
         ++i, ++numEqual)
        if (!elementsA[i] || !elementsB[i] || elementsA[i]->isDifferent(*elementsB[i]))
            break;
    return numEqual;
}

std::shared_ptr<AttrContainer> fieldAt(AttrContainer const& parent, std::uint64_t slot) {
    return FieldNames(parent).at(slot);
}

/// The fields of two containers, and which belong together.
struct FieldPairing {
    FieldPairing(AttrContainer const& firstContainer, AttrContainer const& secondContainer)
        : first(firstContainer), second(secondContainer), matcher(first, second) {}

    FieldNames first, second;
    NameMatcher<FieldNames> matcher;
};

} // namespace

AttrContComparer::AttrContComparer(int categories, int compareMode)
    : categories_(categories), compareMode_(compareMode) {}
AttrContComparer::AttrContComparer(AttrContComparer const&) = default;
AttrContComparer& AttrContComparer::operator=(AttrContComparer const&) = default;
AttrContComparer::~AttrContComparer() = default;

void AttrContComparer::reset() const { fieldStack_.clear(); }

void AttrContComparer::enterField(OptionalContainer field) const { fieldStack_.push_back(field); }

void AttrContComparer::exitField(OptionalContainer) const {
    if (!fieldStack_.empty())
        fieldStack_.pop_back();
}

std::uint64_t AttrContComparer::handleAttributes(Attribute const* first, Attribute const* second) const {
    if (!(compareMode_ & WithTolerances) || !first || !second)
        return 1;
    if (typeid(*first) != typeid(*second))
        return 1;
    return AttributeAccess::isWithinTolerance(*first, *second) ? 0 : 1;
}

std::uint64_t AttrContComparer::compare(AttrContainer const& first, AttrContainer const& second) const {
    auto const firstHeld = ObservationAccess::hold(first); // Hooks may let go of the trees.
    auto const secondHeld = ObservationAccess::hold(second);
    reset();
    return runComparison(first, second);
}

std::uint64_t AttrContComparer::runComparison(OptionalContainer first, OptionalContainer second) const {
    if (!first && !second)
        return 0;
    if (!first)
        return compareMode_ & IgnoreOnlyInSecond ? 0 : addAttributes(second, true);
    if (!second)
        return compareMode_ & IgnoreOnlyInFirst ? 0 : addAttributes(first, false);
    TraversalPath const path(this, &first->get(), &second->get());
    if (!path.isEntered())
        return 0;
    return compareAttributes(*first, *second) + compareFields(*first, *second);
}

bool AttrContComparer::takesPart(AttrContainer const& container, std::uint64_t token) const {
    return (categories_ & container.getAttrCategory(token)) != 0;
}

std::uint64_t AttrContComparer::compareAttributes(AttrContainer const& first,
                                                  AttrContainer const& second) const {
    std::uint64_t const numEqual = numEqualAtFront(first, second);
    if (numEqual == first.getNumAttributes() && numEqual == second.getNumAttributes())
        return 0;
    AttributeNames const firstNames(first);
    AttributeNames const secondNames(second);
    NameMatcher<AttributeNames> matcher(firstNames, secondNames);
    if (numEqual > 0)
        matcher.matchSame(numEqual - 1);
    std::uint64_t count = 0;
    for (std::uint64_t i = numEqual; i < firstNames.size(); ++i) {
        auto const& a = firstNames.at(i);
        std::string_view const name = firstNames.nameAt(i);
        if (name.empty()) {
            matcher.skip(i);
            continue;
        }
        std::uint64_t const match = matcher.match(i, name);
        auto const& b = secondNames.at(match);
        if (b && !a->isDifferent(*b))
            continue;
        bool const firstTakesPart = takesPart(first, firstNames.tokenOf(i));
        auto const firstHeld = a;
        auto const secondHeld = b;
        if (!b) {
            if (!(compareMode_ & IgnoreOnlyInFirst) && firstTakesPart)
                count += handleAttributes(firstHeld.get(), nullptr);
        } else if (firstTakesPart || takesPart(second, secondNames.tokenOf(i))) {
            // The second category is that of the same position, wherever the counterpart stands.
            count += handleAttributes(firstHeld.get(), secondHeld.get());
        }
    }
    if (compareMode_ & IgnoreOnlyInSecond)
        return count;
    for (std::uint64_t i = matcher.alignedEnd(); i < secondNames.size(); ++i)
        if (!matcher.isMatched(i) && secondNames.isNamed(i) && takesPart(second, secondNames.tokenOf(i))) {
            auto const held = secondNames.at(i);
            count += handleAttributes(nullptr, held.get());
        }
    return count;
}

std::uint64_t AttrContComparer::inField(OptionalContainer field, OptionalContainer first,
                                        OptionalContainer second) const {
    enterField(field);
    std::uint64_t const count = runComparison(first, second);
    exitField(field);
    return count;
}

void AttrContComparer::noteSlot(AttrContainer const& parent, std::uint64_t slot) const {
    FieldNames const fields(parent);
    if (!fields.at(slot))
        emptySlotName_ = fields.nameAt(slot);
}

std::uint64_t AttrContComparer::compareFields(AttrContainer const& first, AttrContainer const& second) const {
    if (first.getNumFields() == 0 && second.getNumFields() == 0)
        return 0;
    // Not on the stack, of which each level of a tree takes its share.
    auto const pairing = std::make_unique<FieldPairing>(first, second);
    std::uint64_t count = 0;
    for (std::uint64_t i = 0; i < pairing->first.size(); ++i) {
        auto const field = pairing->first.at(i);
        auto const match = pairing->second.at(pairing->matcher.match(i, pairing->first.nameAt(i)));
        noteSlot(first, i);
        count += inField(optional(field), optional(field), optional(match));
    }
    if (compareMode_ & IgnoreOnlyInSecond)
        return count;
    for (std::uint64_t i = pairing->matcher.alignedEnd(); i < pairing->second.size(); ++i)
        if (!pairing->matcher.isMatched(i)) {
            auto const field = pairing->second.at(i);
            noteSlot(second, i);
            count += inField(optional(field), std::nullopt, optional(field));
        }
    return count;
}

std::uint64_t AttrContComparer::addAttributes(OptionalContainer container, bool asSecond) const {
    if (!container)
        return 0;
    TraversalPath const path(this, &container->get());
    return path.isEntered() ? addOwnAttributes(*container, asSecond) + addFields(*container, asSecond) : 0;
}

std::uint64_t AttrContComparer::addOwnAttributes(AttrContainer const& container, bool asSecond) const {
    AttributeNames const attributes(container);
    std::uint64_t count = 0;
    for (std::uint64_t i = 0; i < attributes.size(); ++i)
        if (attributes.isNamed(i) && takesPart(container, attributes.tokenOf(i))) {
            auto const held = attributes.at(i);
            count += asSecond ? handleAttributes(nullptr, held.get()) : handleAttributes(held.get(), nullptr);
        }
    return count;
}

std::uint64_t AttrContComparer::addFields(AttrContainer const& container, bool asSecond) const {
    std::uint64_t count = 0;
    for (std::uint64_t i = 0; i < container.getNumFields(); ++i) {
        auto const held = fieldAt(container, i);
        OptionalContainer const field = optional(held);
        noteSlot(container, i);
        count += asSecond ? inField(field, std::nullopt, field) : inField(field, field, std::nullopt);
    }
    return count;
}

// --- Keeping the paths

AttrContComparerKeepDiffs::AttrContComparerKeepDiffs() = default;
AttrContComparerKeepDiffs::AttrContComparerKeepDiffs(AttrContComparerKeepDiffs const&) = default;
AttrContComparerKeepDiffs& AttrContComparerKeepDiffs::operator=(AttrContComparerKeepDiffs const&) = default;
AttrContComparerKeepDiffs::~AttrContComparerKeepDiffs() = default;

std::optional<std::string> AttrContComparerKeepDiffs::getMismatch(std::uint64_t index) const {
    return index < mismatches_.size() ? std::optional(mismatches_[index]) : std::nullopt;
}

void AttrContComparerKeepDiffs::reset() const {
    AttrContComparer::reset();
    path_.clear();
    pathLengths_.clear();
    mismatches_.clear();
}

void AttrContComparerKeepDiffs::enterField(OptionalContainer field) const {
    AttrContComparer::enterField(field);
    pathLengths_.push_back(path_.size());
    if (field)
        path_.append(field->get().getName()).append("/");
    else if (!getEmptySlotName().empty())
        path_.append(getEmptySlotName()).append("/");
}

void AttrContComparerKeepDiffs::exitField(OptionalContainer field) const {
    if (!pathLengths_.empty()) {
        path_.resize(pathLengths_.back());
        pathLengths_.pop_back();
    }
    AttrContComparer::exitField(field);
}

std::uint64_t AttrContComparerKeepDiffs::handleAttributes(Attribute const* first,
                                                          Attribute const* second) const {
    if (auto const* named = first ? first : second)
        mismatches_.push_back(path_ + named->getName());
    return AttrContComparer::handleAttributes(first, second);
}

// --- Marking

AttrContComparerMarkDiffs::AttrContComparerMarkDiffs(int markingMode) : markingMode_(markingMode) {}
AttrContComparerMarkDiffs::AttrContComparerMarkDiffs(AttrContComparerMarkDiffs const&) = default;
AttrContComparerMarkDiffs& AttrContComparerMarkDiffs::operator=(AttrContComparerMarkDiffs const&) = default;
AttrContComparerMarkDiffs::~AttrContComparerMarkDiffs() = default;

std::uint64_t AttrContComparerMarkDiffs::handleAttributes(Attribute const* first,
                                                          Attribute const* second) const {
    // No attribute is a constant object; the walk only sees it through one that is not to be changed.
    if (first && (markingMode_ & MarkInFirst))
        const_cast<Attribute*>(first)->setMarked(true);
    if (second && (markingMode_ & MarkInSecond))
        const_cast<Attribute*>(second)->setMarked(true);
    return AttrContComparer::handleAttributes(first, second);
}

} // namespace Zorvan::AttributeContainer
