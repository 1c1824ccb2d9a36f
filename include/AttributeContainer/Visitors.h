// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Visitor.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Zorvan::AttributeContainer {

/// Finds the first field that satisfies a predicate.
///
///     FindField find([](AttrContainer const& c) { return c.name() == "bounds"; }, 1, 8);
///     root->fieldVisitor(find, 1);
///     if (auto bounds = find.getMatch()) ...
class KX_ATTRIBUTECONTAINER_API FindField : public GeneralVisitor<AttrContainer&> {
public:
    /// An empty predicate makes visits throw `std::bad_function_call`.
    FindField(std::function<bool(AttrContainer const&)> const& predicate, unsigned int firstLevel,
              unsigned int maxLevel);
    ~FindField() override;

    VisitResult visit(AttrContainer& container) override;

    /// The match, kept until the visitor goes; empty when there was none.
    std::shared_ptr<AttrContainer> getMatch();
    /// The container at which the walk stops when it does not match.
    std::shared_ptr<AttrContainer> getStopAt();
    void setStopAt(std::shared_ptr<AttrContainer> container);

protected:
    bool matches(AttrContainer const& container) const;
    bool isStopAt(AttrContainer const& container) const;
    void setMatch(std::shared_ptr<AttrContainer> match);

private:
    std::function<bool(AttrContainer const&)> predicate_;
    std::shared_ptr<AttrContainer> match_;
    std::shared_ptr<AttrContainer> stopAt_;
};

/// Collects every field that satisfies a predicate, nested ones too, in the order of the walk.
class KX_ATTRIBUTECONTAINER_API CollectFields : public FindField {
public:
    using const_iterator = std::vector<std::shared_ptr<AttrContainer>>::const_iterator;

    CollectFields(std::function<bool(AttrContainer const&)> const& predicate, unsigned int firstLevel,
                  unsigned int maxLevel);
    ~CollectFields() override;

    VisitResult visit(AttrContainer& container) override;

    const_iterator begin() const { return matches_.begin(); }
    const_iterator end() const { return matches_.end(); }
    std::uint64_t getNumElements() const { return matches_.size(); }
    /// The match at an index; empty at or beyond the count.
    std::shared_ptr<AttrContainer> get(std::uint64_t index);
    void clearList();

private:
    std::vector<std::shared_ptr<AttrContainer>> matches_;
};

/// Copies the values of the visited tree into a target tree, attribute by attribute through their text, with
/// full notification. The trees are walked in parallel by tokens; what has no counterpart is passed over.
///
///     AttrCopyVisitor copy(*target, 8);
///     source->attributeVisitor(copy, true);
class KX_ATTRIBUTECONTAINER_API AttrCopyVisitor : public AttributeVisitor {
public:
    AttrCopyVisitor(AttrContainer& target, unsigned int maxLevel);
    ~AttrCopyVisitor() override;

    /// Whether only marked attributes are copied; false at first.
    bool getConsiderAuxiliaryOnly() const { return considerAuxiliaryOnly_; }
    void setConsiderAuxiliaryOnly(bool only) { considerAuxiliaryOnly_ = only; }

    using AttributeVisitor::visitDone;
    VisitResult visit(Attribute& attribute) override;
    VisitResult visit(AttrContainer& container) override;

private:
    bool considerAuxiliaryOnly_ = false;
    AttrContainer& target_;
    std::deque<std::pair<std::shared_ptr<AttrContainer>, std::shared_ptr<AttrContainer>>> stack_;
};

/// Counts the marked attributes of a tree.
class KX_ATTRIBUTECONTAINER_API AttrCountMarkedVisitor : public AttributeVisitor {
public:
    explicit AttrCountMarkedVisitor(unsigned int maxLevel = 0xFFFFFFFF);
    ~AttrCountMarkedVisitor() override;

    using AttributeVisitor::visit;
    VisitResult visit(Attribute& attribute) override;

    std::uint64_t getNumMarkedAttributes() const { return numMarked_; }

private:
    std::uint64_t numMarked_ = 0;
};

/// Sets or clears the marks of a tree's attributes; nobody is notified.
class KX_ATTRIBUTECONTAINER_API SetAttrMarksVisitor : public AttributeVisitor {
public:
    SetAttrMarksVisitor(bool mark, unsigned int maxLevel);
    ~SetAttrMarksVisitor() override;

    using AttributeVisitor::visit;
    VisitResult visit(Attribute& attribute) override;

private:
    bool mark_;
};

} // namespace Zorvan::AttributeContainer
