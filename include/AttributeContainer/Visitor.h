// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <cstdint>

namespace Zorvan::AttributeContainer {

class Attribute;
class AttrContainer;
class Object;
class Observer;

/// The base of all visitors.
class KX_ATTRIBUTECONTAINER_API VisitorCore {
public:
    /// What a visit answers: bits, OR-ed while a traversal climbs back up. Test bits, never compare for
    /// equality.
    enum VisitResult : std::uint32_t {
        Continue = 0,     ///< Go on.
        SkipChildren = 1, ///< Keep out of what is below this node.
        Stop = 2,         ///< End the walk: the loops over siblings break off at every level.
        Ignored = 4       ///< Nothing to do with this node; treated as SkipChildren.
    };
};

inline VisitorCore::VisitResult operator|(VisitorCore::VisitResult a, VisitorCore::VisitResult b) {
    return static_cast<VisitorCore::VisitResult>(static_cast<std::uint32_t>(a) |
                                                 static_cast<std::uint32_t>(b));
}
inline VisitorCore::VisitResult& operator|=(VisitorCore::VisitResult& a, VisitorCore::VisitResult b) {
    return a = a | b;
}

/// A visitor of nodes `T` (a reference type) between two levels of a tree. A visitor serves one walk at a
/// time. What it throws ends the walk and comes out of it. It may change the tree; of members that come or go
/// meanwhile some may be passed over.
template <class T>
class GeneralVisitor : public VisitorCore {
public:
    GeneralVisitor(GeneralVisitor const&) = default;
    virtual ~GeneralVisitor() = default;

    /// Handles a node.
    virtual VisitResult visit(T node) = 0;
    /// Told after a node's subtree, where the traversal's mode asks for it.
    virtual VisitResult visitDone(T) { return Continue; }

    /// Nodes above this level are walked through without being visited.
    unsigned int getFirstLevel() const { return firstLevel_; }
    /// Nodes below this level are not entered.
    unsigned int getMaxLevel() const { return maxLevel_; }
    /// The level of the node that is being handled; the traversals keep it.
    unsigned int getHierLevel() const { return hierLevel_; }
    void setHierLevel(unsigned int level) { hierLevel_ = level; }

protected:
    GeneralVisitor(unsigned int firstLevel, unsigned int maxLevel)
        : firstLevel_(firstLevel), maxLevel_(maxLevel) {}
    GeneralVisitor& operator=(GeneralVisitor const&) = default;

private:
    std::uint32_t firstLevel_;
    std::uint32_t maxLevel_;
    std::uint32_t hierLevel_ = 0;
};

/// A visitor of the attributes of containers, and of the containers that hold them.
class KX_ATTRIBUTECONTAINER_API AttributeVisitor : public GeneralVisitor<Attribute&> {
public:
    AttributeVisitor(AttributeVisitor const&) = default;
    ~AttributeVisitor() override;

    VisitResult visit(Attribute& attribute) override = 0;
    VisitResult visitDone(Attribute& attribute) override;
    /// After a container's attributes and fields.
    virtual VisitResult visitDone(AttrContainer& container);
    /// Before a container's attributes; any result but Continue keeps the walk out of the container.
    virtual VisitResult visit(AttrContainer& container);

protected:
    AttributeVisitor(unsigned int firstLevel, unsigned int maxLevel);
    AttributeVisitor& operator=(AttributeVisitor const&) = default;
};

/// A visitor of observers: containers pass themselves and their fields to it.
class KX_ATTRIBUTECONTAINER_API ObserverVisitor : public GeneralVisitor<Observer&> {
public:
    ObserverVisitor(ObserverVisitor const&) = default;
    ~ObserverVisitor() override;

    VisitResult visit(Observer& observer) override = 0;

protected:
    ObserverVisitor(unsigned int firstLevel, unsigned int maxLevel);
};

} // namespace Zorvan::AttributeContainer
