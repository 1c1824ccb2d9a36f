// SPDX-License-Identifier: MIT
#include "TreeMerger.h"

#include "Pairing.h"
#include "Placeholder.h"

#include <AttributeContainer/Object.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <unordered_set>
#include <utility>

namespace kxmodel {

using namespace Zorvan::AttributeContainer;

namespace {

std::shared_ptr<AttrContainer> copyOf(AttrContainer& original);

void addChild(Object& parent, std::shared_ptr<AttrContainer> const& child) {
    constexpr int unchecked = 4; // As documents are read.
    if (!parent.addChild(std::dynamic_pointer_cast<Object>(child), unchecked))
        throw std::runtime_error("\"" + child->getName() + "\" cannot be a child of \"" + parent.getName() +
                                 "\"");
}

/// Copies of objects have no children at first, nor have objects among their fields.
void copyChildren(AttrContainer& copy, AttrContainer& original) {
    Members const from = membersOf(original), to = membersOf(copy);
    Pairing const fields = pairFields(to.fields, from.fields);
    for (std::size_t i = 0; i < to.fields.size(); ++i)
        if (fields.partners[i] != noPartner)
            copyChildren(*to.fields[i].item, *from.fields[fields.partners[i]].item);
    if (auto* const object = dynamic_cast<Object*>(&copy))
        for (auto const& child : from.children)
            addChild(*object, copyOf(*child.item));
}

std::shared_ptr<AttrContainer> copyOf(AttrContainer& original) {
    auto copy = original.duplicate(CreateType::Deep);
    copyChildren(*copy, original);
    return copy;
}

class TreeMerger {
public:
    explicit TreeMerger(bool deletesSurplus)
        : deletesSurplus_(deletesSurplus),
          flags_(AttrContMerger::BLOCK_OBSERVERS |
                 (deletesSurplus ? 0 : AttrContMerger::KEEP_NON_EXISTENT_IN_SOURCE)) {}

    /// Two containers that are not replaced.
    void merge(AttrContainer& target, AttrContainer& source) {
        replaceFields(target, source);
        AttrContMerger::merge(target, source, flags_, &counters_);
        mergeChildren(target, source);
    }

    AttrContMerger::Result counters() const {
        AttrContMerger::Result counters = counters_;
        counters.unchanged -= numCopied_;
        return counters;
    }

private:
    static bool isReplaced(AttrContainer& target, AttrContainer& source) {
        if (documentClassOf(target) != documentClassOf(source) ||
            isPlaceholder(target) != isPlaceholder(source))
            return true;
        return isPlaceholder(target) && textOfPlaceholder(target) != textOfPlaceholder(source);
    }

    /// Replaces what is to be replaced before the library, which enters every field, gets there, and notes
    /// which fields it is going to add.
    void replaceFields(AttrContainer& target, AttrContainer& source) {
        if (!prepared_.emplace(&target, &source).second)
            return;
        Containers const from = membersOf(source).fields, to = membersOf(target).fields;
        Pairing const pairing = pairFields(from, to);
        for (std::size_t i = 0; i < from.size(); ++i) {
            AttrContainer& field = *from[i].item;
            if (pairing.partners[i] == noPartner) {
                added_.insert(&field);
                continue;
            }
            auto const& old = to[pairing.partners[i]].item;
            if (!isReplaced(*old, field)) {
                if (!isPlaceholder(*old))
                    replaceFields(*old, field);
                continue;
            }
            auto const copy = copyOf(field);
            if (!target.replaceField(old, copy))
                continue;
            copies_.insert(copy.get());
            countReplaced();
            // The library is going to find the same values in both.
            AttrContMerger::Result found;
            AttrContMerger::merge(*copy, field, flags_, &found);
            numCopied_ += found.unchanged;
        }
    }

    void countReplaced() {
        ++counters_.addedFields;
        ++counters_.removedFields;
    }

    /// Merges the children of two containers, and those of objects among their fields.
    void mergeChildren(AttrContainer& target, AttrContainer& source) {
        if (!merged_.emplace(&target, &source).second)
            return;
        Members const from = membersOf(source), to = membersOf(target);
        Pairing const fields = pairFields(from.fields, to.fields);
        for (std::size_t i = 0; i < from.fields.size(); ++i) {
            if (fields.partners[i] == noPartner)
                continue;
            AttrContainer& targetField = *to.fields[fields.partners[i]].item;
            AttrContainer& sourceField = *from.fields[i].item;
            if (added_.contains(&sourceField))
                copyChildren(targetField, sourceField);
            else if (!copies_.contains(&targetField) && !isPlaceholder(targetField))
                mergeChildren(targetField, sourceField);
        }
        if (auto* const object = dynamic_cast<Object*>(&target))
            mergeChildren(*object, to.children, from.children);
    }

    void mergeChildren(Object& target, Containers const& to, Containers const& from) {
        Pairing const pairing = pairChildren(from, to);
        std::vector<std::shared_ptr<AttrContainer>> added;
        auto kept = to;
        std::size_t firstReplaced = to.size();
        for (std::size_t i = 0; i < from.size(); ++i) {
            std::size_t const partner = pairing.partners[i];
            if (partner == noPartner) {
                added.push_back(copyOf(*from[i].item));
                ++counters_.addedFields;
            } else if (isReplaced(*to[partner].item, *from[i].item)) {
                kept[partner].item = copyOf(*from[i].item);
                firstReplaced = std::min(firstReplaced, partner);
                countReplaced();
            } else if (!isPlaceholder(*to[partner].item)) {
                merge(*to[partner].item, *from[i].item);
            }
        }
        if (deletesSurplus_) {
            for (std::size_t const i : pairing.unpaired) {
                target.rmChild(static_cast<Object&>(*to[i].item), 0);
                kept[i].item.reset();
                ++counters_.removedFields;
            }
        }
        // There is no way to put a child anywhere but behind the others.
        for (std::size_t i = firstReplaced; i < to.size(); ++i)
            if (kept[i].item)
                target.rmChild(static_cast<Object&>(*to[i].item), 0);
        for (std::size_t i = firstReplaced; i < to.size(); ++i)
            if (kept[i].item)
                addChild(target, kept[i].item);
        for (auto const& child : added)
            addChild(target, child);
    }

    using PairSet = std::set<std::pair<AttrContainer const*, AttrContainer const*>>;

    bool deletesSurplus_;
    unsigned int flags_;
    AttrContMerger::Result counters_;
    std::uint32_t numCopied_ = 0; ///< Attributes that are equal because they were copied.
    PairSet prepared_;
    PairSet merged_;
    std::unordered_set<AttrContainer const*> added_;  ///< Fields of the source.
    std::unordered_set<AttrContainer const*> copies_; ///< Fields of the target.
};

} // namespace

AttrContMerger::Result mergeTrees(AttrContainer& target, AttrContainer& source, bool deletesSurplus) {
    auto const* const object = dynamic_cast<Object const*>(&source);
    if (object && object->children().getNumChildren() != 0 && !dynamic_cast<Object const*>(&target))
        throw std::runtime_error("the root of the target can have no children, unlike that of the source");
    TreeMerger merger(deletesSurplus);
    merger.merge(target, source);
    return merger.counters();
}

} // namespace kxmodel
