// SPDX-License-Identifier: MIT
#include <AttributeContainer/Visitors.h>

#include "containers/ContainerAccess.h"

#include <utility>

namespace Zorvan::AttributeContainer {

// --- FindField

FindField::FindField(std::function<bool(AttrContainer const&)> const& predicate, unsigned int firstLevel,
                     unsigned int maxLevel)
    : GeneralVisitor<AttrContainer&>(firstLevel, maxLevel), predicate_(predicate) {}

FindField::~FindField() = default;

VisitorCore::VisitResult FindField::visit(AttrContainer& container) {
    if (match_)
        return Stop;
    if (!matches(container))
        return isStopAt(container) ? Stop : Continue;
    setMatch(ContainerAccess::shared(container));
    return SkipChildren;
}

std::shared_ptr<AttrContainer> FindField::getMatch() { return match_; }

std::shared_ptr<AttrContainer> FindField::getStopAt() { return stopAt_; }

void FindField::setStopAt(std::shared_ptr<AttrContainer> container) { stopAt_ = std::move(container); }

bool FindField::matches(AttrContainer const& container) const { return predicate_(container); }

bool FindField::isStopAt(AttrContainer const& container) const { return stopAt_.get() == &container; }

void FindField::setMatch(std::shared_ptr<AttrContainer> match) { match_ = std::move(match); }

// --- CollectFields

CollectFields::CollectFields(std::function<bool(AttrContainer const&)> const& predicate,
                             unsigned int firstLevel, unsigned int maxLevel)
    : FindField(predicate, firstLevel, maxLevel) {}

CollectFields::~CollectFields() = default;

VisitorCore::VisitResult CollectFields::visit(AttrContainer& container) {
    setMatch(nullptr);
    if (!matches(container))
        return isStopAt(container) ? Stop : Continue;
    matches_.push_back(ContainerAccess::shared(container));
    setMatch(matches_.back());
    return Continue;
}

std::shared_ptr<AttrContainer> CollectFields::get(std::uint64_t index) {
    return index < matches_.size() ? matches_[index] : nullptr;
}

void CollectFields::clearList() { matches_.clear(); }

// --- AttrCopyVisitor

AttrCopyVisitor::AttrCopyVisitor(AttrContainer& target, unsigned int maxLevel)
    : AttributeVisitor(0, maxLevel), target_(target) {}

AttrCopyVisitor::~AttrCopyVisitor() = default;

VisitorCore::VisitResult AttrCopyVisitor::visit(AttrContainer& container) {
    while (stack_.size() > getHierLevel())
        stack_.pop_back();
    if (stack_.empty()) {
        stack_.emplace_back(ContainerAccess::shared(target_), ContainerAccess::shared(container));
        return Continue;
    }
    auto const& [target, source] = stack_.back();
    std::uint64_t const token = source->getFieldToken(container);
    auto counterpart = token == DataStructures::KeyTable::noToken ? nullptr : target->getField(token).lock();
    if (!counterpart)
        return Ignored;
    stack_.emplace_back(std::move(counterpart), ContainerAccess::shared(container));
    return Continue;
}

VisitorCore::VisitResult AttrCopyVisitor::visit(Attribute& attribute) {
    if ((considerAuxiliaryOnly_ && !attribute.isMarked()) || stack_.empty())
        return Continue;
    auto const [target, source] = stack_.back(); // Held: observers of the target may do anything.
    if (auto const counterpart = ContainerAccess::attribute(*target, source->getAttrToken(attribute)))
        counterpart->assignFrom(attribute.getValueAsText(), nullptr, nullptr, nullptr);
    return Continue;
}

// --- Marks

AttrCountMarkedVisitor::AttrCountMarkedVisitor(unsigned int maxLevel) : AttributeVisitor(0, maxLevel) {}

AttrCountMarkedVisitor::~AttrCountMarkedVisitor() = default;

VisitorCore::VisitResult AttrCountMarkedVisitor::visit(Attribute& attribute) {
    numMarked_ += attribute.isMarked() ? 1 : 0;
    return Continue;
}

SetAttrMarksVisitor::SetAttrMarksVisitor(bool mark, unsigned int maxLevel)
    : AttributeVisitor(0, maxLevel), mark_(mark) {}

SetAttrMarksVisitor::~SetAttrMarksVisitor() = default;

VisitorCore::VisitResult SetAttrMarksVisitor::visit(Attribute& attribute) {
    attribute.setMarked(mark_);
    return Continue;
}

} // namespace Zorvan::AttributeContainer
