// SPDX-License-Identifier: MIT
#include <AttributeContainer/BlockUpdateObservers.h>

#include "containers/ContainerAccess.h"
#include "observation/ObservationAccess.h"

#include <AttributeContainer/WtAttrContainer.h>

#include <exception>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

void clearMarks(std::vector<std::weak_ptr<AttrContainer>> const& enlisted) noexcept {
    for (auto const& entry : enlisted)
        if (auto const container = entry.lock())
            ContainerAccess::setEnlisted(*container, false);
}

} // namespace

BlockUpdateObservers::BlockUpdateObservers(std::shared_ptr<AttrContainer> container)
    : container_(std::move(container)), uncaughtExceptions_(std::uncaught_exceptions()) {
    ++table().blockDepth_;
}

BlockUpdateObservers::~BlockUpdateObservers() noexcept(false) {
    bool const isUnwinding = std::uncaught_exceptions() > uncaughtExceptions_;
    ObserverRelationTableObserver::Containers enlisted;
    // Whatever happens, the depth goes down, or every later copy of the thread would wait for this scope.
    try {
        if (container_ && !isUnwinding && !ContainerAccess::isEnlisted(*container_)) {
            table().enlist(container_);
            ContainerAccess::setEnlisted(*container_, true);
        }
    } catch (...) {
        if (--table().blockDepth_ == 0)
            clearMarks(table().takeEnlisted());
        throw;
    }
    if (--table().blockDepth_ != 0)
        return;
    enlisted = table().takeEnlisted();
    clearMarks(enlisted); // Updating runs foreign code, which may copy the same containers.
    if (isUnwinding)
        return;
    for (auto const& entry : enlisted)
        if (auto const container = entry.lock())
            container->updateObservers(table());
}

std::shared_ptr<AttrContainer> BlockUpdateObservers::getToBeUpdated() const { return container_; }

void BlockUpdateObservers::setToBeUpdated(std::shared_ptr<AttrContainer> container) {
    container_ = std::move(container);
}

// --- Visitors

ExchangePtr::ExchangePtr(ObserverRelationTableObserver& table)
    : AttributeVisitor(0, 0xFFFFFFFF), table_(table) {}

ExchangePtr::~ExchangePtr() = default;

VisitorCore::VisitResult ExchangePtr::visit(Attribute& attribute) {
    exchange(attribute);
    return Continue;
}

void ExchangePtr::exchange(Observable& observable) { numExchanged_ += observable.exchangePtr(table_); }

UpdateObserver::UpdateObserver(ObserverRelationTableObserver& table) : ExchangePtr(table) {}

UpdateObserver::~UpdateObserver() = default;

VisitorCore::VisitResult UpdateObserver::visit(Attribute& attribute) {
    // As of most attributes.
    if (!ObservationAccess::hasPreObservers(attribute) && !ObservationAccess::hasPostObservers(attribute))
        return Continue;
    ExchangePtr::visit(attribute);
    attribute.updateObserverLists(true);
    return Continue;
}

} // namespace Zorvan::AttributeContainer
