// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ObserverRelationTable.h>
#include <AttributeContainer/Visitor.h>

#include <cstdint>
#include <memory>

namespace Zorvan::AttributeContainer {

class AttrContainer;

/// Defers the rewiring of copied links: when the thread's outermost such scope ends, every container that a
/// scope named has its links redirected from source observers to their copies, and activated.
///
/// The destructor may throw what activating links throws; while an exception unwinds, no update is run.
class KX_ATTRIBUTECONTAINER_API BlockUpdateObservers : public PreserveObserverRelation {
public:
    /// `container` may be empty.
    explicit BlockUpdateObservers(std::shared_ptr<AttrContainer> container);
    ~BlockUpdateObservers() noexcept(false) override;

    /// The container that the end of this scope will have updated.
    std::shared_ptr<AttrContainer> getToBeUpdated() const;
    void setToBeUpdated(std::shared_ptr<AttrContainer> container);

private:
    std::shared_ptr<AttrContainer> container_;
    int uncaughtExceptions_;
};

/// Redirects the inactive links of the visited attributes from source observers to their copies.
class KX_ATTRIBUTECONTAINER_API ExchangePtr : public AttributeVisitor {
public:
    explicit ExchangePtr(ObserverRelationTableObserver& table);
    ExchangePtr(ExchangePtr const& other) = default;
    ~ExchangePtr() override;

    using AttributeVisitor::visit;
    VisitResult visit(Attribute& attribute) override;

    /// Redirects the links of any observable, as of a visited attribute.
    void exchange(Observable& observable);
    /// The number of links redirected so far.
    std::uint64_t getNumExchanged() const { return numExchanged_; }

private:
    std::uint64_t numExchanged_ = 0;
    ObserverRelationTableObserver& table_;
};

/// The same, then activates the attribute's links and sorts its lists.
class KX_ATTRIBUTECONTAINER_API UpdateObserver : public ExchangePtr {
public:
    explicit UpdateObserver(ObserverRelationTableObserver& table);
    UpdateObserver(UpdateObserver const& other) = default;
    ~UpdateObserver() override;

    using AttributeVisitor::visit;
    VisitResult visit(Attribute& attribute) override;
};

} // namespace Zorvan::AttributeContainer
