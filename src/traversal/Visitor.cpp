// SPDX-License-Identifier: MIT
#include <AttributeContainer/Visitor.h>

namespace Zorvan::AttributeContainer {

AttributeVisitor::AttributeVisitor(unsigned int firstLevel, unsigned int maxLevel)
    : GeneralVisitor<Attribute&>(firstLevel, maxLevel) {}

AttributeVisitor::~AttributeVisitor() = default;

VisitorCore::VisitResult AttributeVisitor::visitDone(Attribute&) { return Continue; }

VisitorCore::VisitResult AttributeVisitor::visitDone(AttrContainer&) { return Continue; }

VisitorCore::VisitResult AttributeVisitor::visit(AttrContainer&) { return Continue; }

ObserverVisitor::ObserverVisitor(unsigned int firstLevel, unsigned int maxLevel)
    : GeneralVisitor<Observer&>(firstLevel, maxLevel) {}

ObserverVisitor::~ObserverVisitor() = default;

} // namespace Zorvan::AttributeContainer
