// SPDX-License-Identifier: MIT
#include "containers/ContainerAccess.h"
#include "containers/TraversalPath.h"

#include <AttributeContainer/Object.h>
#include <AttributeContainer/Visitor.h>

#include <cstdint>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

using VisitResult = VisitorCore::VisitResult;

/// Sets a visitor's level one down for a scope.
template <class Visitor>
class LevelScope {
public:
    explicit LevelScope(Visitor& visitor) : visitor_(visitor), level_(visitor.getHierLevel()) {
        visitor_.setHierLevel(level_ + 1);
    }
    ~LevelScope() { visitor_.setHierLevel(level_); }
    LevelScope(LevelScope const&) = delete;
    LevelScope& operator=(LevelScope const&) = delete;

private:
    Visitor& visitor_;
    unsigned int level_;
};

/// Asks for the memory of a field that is visited soon, and of its first attribute, which usually stands
/// behind it: in a wide container none of it is in a cache.
void fetchField(FieldList const& fields, std::uint64_t index) {
    constexpr std::uintptr_t size = 384, lineSize = 64;
    if (auto const address =
            reinterpret_cast<std::uintptr_t>(fields.getElement(fields.getFirstToken() + index).get()))
        for (std::uintptr_t offset = 0; offset < size; offset += lineSize)
            // NOLINTNEXTLINE(performance-no-int-to-ptr): a computed pointer may not leave the field
            __builtin_prefetch(reinterpret_cast<void const*>(address + offset));
}

/// The fields by index: each is held while it is handled, and the list is read anew at each step. `result` is
/// what was answered before; the loop ends behind the first field also when that was to stop.
template <class Enter>
VisitResult forEachField(AttrContainer& container, Enter const& enter,
                         VisitResult result = VisitorCore::Continue) {
    for (std::uint64_t i = 0;
         ContainerAccess::fields(container) && i < ContainerAccess::fields(container)->size(); ++i) {
        auto const field = ContainerAccess::fields(container)->getElement(
            ContainerAccess::fields(container)->getFirstToken() + i);
        if (!field)
            continue;
        fetchField(*ContainerAccess::fields(container), i + 3);
        result |= enter(*field);
        if (result & VisitorCore::Stop)
            break;
    }
    return result;
}

template <class Enter>
VisitResult forEachChild(Object& object, Enter const& enter) {
    VisitResult result = VisitorCore::Continue;
    for (std::uint64_t i = 0; i < object.children().getNumChildren(); ++i) {
        auto const child = object.children().getChild(i);
        result |= enter(*child);
        if (result & VisitorCore::Stop)
            break;
    }
    return result;
}

/// The traversal of a node and what is below it; `below` walks the sub-nodes.
template <class Node, class Visitor, class Below>
VisitResult traverse(Node& node, Visitor& visitor, int mode, Below const& below) {
    unsigned int const level = visitor.getHierLevel();
    if (level > visitor.getMaxLevel())
        return VisitorCore::SkipChildren;
    TraversalPath const path(&visitor, &node);
    if (!path.isEntered())
        return VisitorCore::Continue;
    auto const self = node.weak_from_this().lock(); // A visitor may let go of the node.
    bool const isVisited = level >= visitor.getFirstLevel();
    bool const hasDone = (mode & 2) != 0;
    if ((mode & 3) != 0 && isVisited) {
        VisitResult const result = visitor.visit(node);
        if (result != VisitorCore::Continue)
            return hasDone ? result | visitor.visitDone(node) : result;
    }
    VisitResult result = VisitorCore::Continue;
    {
        LevelScope<Visitor> const deeper(visitor);
        result = below();
    }
    if ((mode & 3) == 1 || !isVisited)
        return result;
    return result | (hasDone ? visitor.visitDone(node) : visitor.visit(node));
}

} // namespace

VisitResult AttrContainer::fieldVisitor(GeneralVisitor<AttrContainer&>& visitor, int mode) {
    return traverse(*this, visitor, mode, [&] {
        return forEachField(*this, [&](AttrContainer& field) { return field.fieldVisitor(visitor, mode); });
    });
}

VisitResult AttrContainer::fieldAndStructureVisitor(GeneralVisitor<AttrContainer&>& visitor, int mode) {
    return traverse(*this, visitor, mode, [&] {
        return forEachField(
            *this, [&](AttrContainer& field) { return field.fieldAndStructureVisitor(visitor, mode); });
    });
}

VisitResult AttrContainer::observerVisitor(ObserverVisitor& visitor, bool recurse) {
    Observer& self = *this;
    unsigned int const level = visitor.getHierLevel();
    if (level > visitor.getMaxLevel())
        return VisitorCore::SkipChildren;
    TraversalPath const path(&visitor, this);
    if (!path.isEntered())
        return VisitorCore::Continue;
    auto const hold = weak_from_this().lock();
    if (level >= visitor.getFirstLevel()) {
        VisitResult const result = visitor.visit(self);
        if (result != VisitorCore::Continue)
            return result;
    }
    if (!recurse)
        return VisitorCore::Continue;
    LevelScope<ObserverVisitor> const deeper(visitor);
    return forEachField(*this, [&](AttrContainer& field) { return field.observerVisitor(visitor, true); });
}

VisitResult AttrContainer::attributeVisitor(AttributeVisitor& visitor, bool recurse) {
    unsigned int const level = visitor.getHierLevel();
    if (level > visitor.getMaxLevel())
        return VisitorCore::SkipChildren;
    TraversalPath const path(&visitor, this);
    if (!path.isEntered())
        return VisitorCore::Continue;
    auto const self = weak_from_this().lock();
    VisitResult result = visitor.visit(*this);
    if (result != VisitorCore::Continue)
        return result;
    if (level >= visitor.getFirstLevel()) {
        auto const& declared = attributes_.attributes();
        for (std::uint64_t i = 0; i < declared.size() && result == VisitorCore::Continue; ++i)
            if (declared[i]) // Stays where it is for as long as the container lives.
                result = visitor.visit(*declared[i]);
        for (std::uint64_t i = 0; customAttributes_ && i < customAttributes_->size(); ++i)
            if (auto const attribute =
                    customAttributes_->getElement(customAttributes_->getFirstToken() + i)) {
                result |= visitor.visit(*attribute);
                if (result != VisitorCore::Continue)
                    break; // After one custom attribute also when a declared one has answered so.
            }
    }
    if (recurse) {
        LevelScope<AttributeVisitor> const deeper(visitor);
        result = forEachField(
            *this, [&](AttrContainer& field) { return field.attributeVisitor(visitor, recurse); }, result);
    }
    return result | visitor.visitDone(*this);
}

// --- Objects

namespace {

/// Lets a visitor of constant objects walk by the traversal of the others.
class ConstVisitorAdapter : public GeneralVisitor<Object&> {
public:
    explicit ConstVisitorAdapter(GeneralVisitor<Object const&>& visitor)
        : GeneralVisitor<Object&>(visitor.getFirstLevel(), visitor.getMaxLevel()), visitor_(visitor),
          level_(visitor.getHierLevel()) {
        setHierLevel(level_);
    }
    ~ConstVisitorAdapter() override { visitor_.setHierLevel(level_); }

    VisitResult visit(Object& object) override {
        visitor_.setHierLevel(getHierLevel());
        return visitor_.visit(object);
    }
    VisitResult visitDone(Object& object) override {
        visitor_.setHierLevel(getHierLevel());
        return visitor_.visitDone(object);
    }

private:
    GeneralVisitor<Object const&>& visitor_;
    unsigned int level_;
};

} // namespace

VisitResult Object::structureVisitor(GeneralVisitor<Object&>& visitor, int mode) {
    return traverse(*this, visitor, mode, [&] {
        return forEachChild(*this, [&](Object& child) { return child.structureVisitor(visitor, mode); });
    });
}

VisitResult Object::structureVisitor(GeneralVisitor<Object const&>& visitor, int mode) const {
    ConstVisitorAdapter adapter(visitor);
    return const_cast<Object*>(this)->structureVisitor(adapter, mode);
}

} // namespace Zorvan::AttributeContainer
