// SPDX-License-Identifier: MIT
#include <AttributeContainer/AttrContMerger.h>

#include "attributes/AttributeChange.h"
#include "containers/ContainerAccess.h"
#include "containers/TraversalPath.h"
#include "traversal/NameMatcher.h"

#include <AttributeContainer/BlockObserver.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <utility>

namespace Zorvan::AttributeContainer {

namespace {

constexpr int modeSkipNameCheck = 4;
constexpr int modeMakeUnique = 16;
constexpr std::uint64_t none = DataStructures::KeyTable::noToken;

/// What becomes of the order of a list while members are removed from it: each time the last one takes the
/// place of the one that goes. Members of one name are put back into the order that they had, by which they
/// are told apart.
class RemovalOrder {
public:
    RemovalOrder(std::uint64_t size, bool hasDistinctNames) : isNeeded_(!hasDistinctNames) {
        if (isNeeded_) {
            origins_.resize(size);
            std::iota(origins_.begin(), origins_.end(), std::uint64_t{0});
        }
    }

    void removed(std::uint64_t index) {
        if (!isNeeded_ || index >= origins_.size())
            return;
        origins_[index] = origins_.back();
        origins_.pop_back();
    }

    /// `put(token, element, name)` stores an element in a slot of the list.
    template <class List, class Put>
    void restore(List const& list, Put const& put) const {
        if (!isNeeded_ || origins_.size() != list.size())
            return; // Foreign code has changed the list, and nothing is known of its order.
        std::unordered_map<std::string, std::vector<std::uint64_t>> groups;
        for (std::uint64_t i = 0; i < origins_.size(); ++i) {
            auto const* name = list.findElementName(list.getFirstToken() + i);
            groups[name ? *name : std::string()].push_back(i);
        }
        for (auto const& [name, slots] : groups) {
            auto ordered = slots;
            std::sort(ordered.begin(), ordered.end(),
                      [this](std::uint64_t a, std::uint64_t b) { return origins_[a] < origins_[b]; });
            if (ordered == slots)
                continue;
            std::vector<std::decay_t<decltype(list.getElement(0))>> elements;
            elements.reserve(ordered.size());
            for (std::uint64_t const slot : ordered)
                elements.push_back(list.getElement(list.getFirstToken() + slot));
            for (std::size_t i = 0; i < slots.size(); ++i)
                put(list.getFirstToken() + slots[i], elements[i], name);
        }
    }

private:
    bool isNeeded_;
    std::vector<std::uint64_t> origins_;
};

} // namespace

/// The merge of one container into another one, without what is below them.
///
/// Every call may run foreign code, which may change both lists: what is at hand is held, positions and sizes
/// are read anew, and what is to be removed is looked for afresh after the values were assigned.
struct AttrContMerger::Merging {
    AttrContainer& target;
    AttrContainer const& source;
    unsigned int flags;
    Touched& touched;
    Result& result;
    /// Held, so that none of them is taken for a later one at the same address.
    std::vector<std::shared_ptr<AttrContainer>> addedFields = {};

    bool has(unsigned int flag) const { return (flags & flag) != 0; }
    bool isBlocked() const { return has(TRIGGER_OBSERVERS_AFTER_MERGE_IS_COMPLETE | BLOCK_OBSERVERS); }

    void announce(std::shared_ptr<Attribute> const& attribute) {
        if (!isBlocked())
            attribute->touch(nullptr, nullptr);
        else if (!has(BLOCK_OBSERVERS))
            touched.push_back(attribute);
    }

    void assign(std::shared_ptr<Attribute> const& to, Attribute const& from) {
        if (!to->isDifferent(from)) {
            ++result.unchanged;
            if (!has(ASSIGN_ONLY_CHANGED_VALUES))
                announce(to);
            return;
        }
        if (isBlocked()) {
            BlockObserver const scope;
            *to = from;
        } else {
            ChangeProbe const probe(*to);
            *to = from;
            if (probe.isRefused())
                return;
        }
        announce(to);
        ++result.changed;
        if (has(MARK_CHANGED_WITH_AUXILIARY))
            to->setMarked(true);
    }

    void addAttribute(Attribute& from, std::string const& name) {
        auto const added = target.addAttribute(from.duplicate(CreateType::Deep, std::nullopt), name).lock();
        ++result.addedAttributes;
        if (added && has(MARK_CHANGED_WITH_AUXILIARY))
            added->setMarked(true);
    }

    void assignAttributes() {
        AttributeNames const sources(source);
        AttributeNames const targets(target);
        NameMatcher<AttributeNames> matcher(sources, targets);
        for (std::uint64_t i = 0, size = sources.size(); i < size && i < sources.size(); ++i) {
            std::string_view const name = sources.nameAt(i);
            if (name.empty()) {
                matcher.skip(i);
                continue;
            }
            auto const to = targets.at(matcher.match(i, name));
            auto const from = sources.at(i);
            if (has(CONSIDER_ONLY_MARKED) && !from->isMarked())
                continue;
            if (to)
                assign(to, *from);
            else
                addAttribute(*from, std::string(sources.nameAt(i)));
        }
    }

    /// The attributes of the target that the source lacks, by their positions.
    std::vector<std::pair<std::uint64_t, std::shared_ptr<Attribute>>> surplusAttributes() const {
        AttributeNames const sources(source);
        AttributeNames const targets(target);
        NameMatcher<AttributeNames> matcher(targets, sources, false);
        std::uint64_t const numAlike = AttributeNames::numDeclaredAlike(target, source);
        std::vector<std::pair<std::uint64_t, std::shared_ptr<Attribute>>> surplus;
        for (std::uint64_t i = 0; i < targets.size(); ++i) {
            if (i < numAlike && matcher.isAligned() && targets.at(i) && sources.at(i)) {
                matcher.matchSame(i);
                continue;
            }
            std::string_view const name = targets.nameAt(i);
            if (name.empty())
                matcher.skip(i);
            else if (matcher.match(i, name) == none)
                surplus.emplace_back(i, targets.at(i));
        }
        return surplus;
    }

    void removeAttributes() {
        auto surplus = surplusAttributes();
        result.removedAttributes += static_cast<std::uint32_t>(surplus.size());
        auto* custom = ContainerAccess::custom(target);
        if (surplus.empty() || !custom)
            return;
        std::uint64_t const numDeclared = target.getNumHardCodedAttributes();
        RemovalOrder order(custom->size(), custom->hasDistinctNames());
        for (; !surplus.empty() && surplus.back().first >= numDeclared; surplus.pop_back()) {
            // What goes may run foreign code, up to the end of the list.
            custom = ContainerAccess::custom(target);
            std::uint64_t const token = custom ? custom->getToken(*surplus.back().second) : none;
            if (token == none)
                continue;
            ContainerAccess::removeCustomAttribute(target, token);
            order.removed(token - custom->getFirstToken());
        }
        if ((custom = ContainerAccess::custom(target)))
            order.restore(*custom,
                          [&](std::uint64_t token, std::shared_ptr<Attribute> attribute,
                              std::string const& name) { custom->setElement(token, attribute, name); });
    }

    void addField(AttrContainer& from, std::string const& name, std::uint64_t emptySlot, bool isFurther) {
        auto const copy = from.duplicate(CreateType::Deep);
        ++result.addedFields;
        bool isAdded = false;
        if (emptySlot != none) {
            // A slot that the class declares is filled; a field beside it could not be found by its name.
            isAdded = target.setField(ContainerAccess::fields(target)->getFirstToken() + emptySlot, copy);
        } else {
            // One more of a name that is there already keeps that name.
            bool const keepsName = isFurther && target.getFieldToken(name) != none;
            isAdded = target.addField(copy, name, keepsName ? modeSkipNameCheck : modeMakeUnique);
        }
        if (isAdded)
            addedFields.push_back(copy);
    }

    void mergeFields() {
        FieldNames const sources(source);
        FieldNames const targets(target);
        NameMatcher<FieldNames> matcher(sources, targets);
        // Neither what is added to the target on the way is a counterpart, nor is it to be merged itself when
        // the source is that target, too.
        std::uint64_t const numTargets = targets.size();
        for (std::uint64_t i = 0, size = sources.size(); i < size && i < sources.size(); ++i) {
            std::uint64_t slot = matcher.match(i, sources.nameAt(i));
            if (slot >= numTargets)
                slot = none;
            auto const from = sources.at(i);
            auto const to = targets.at(slot);
            if (from && to)
                merge_Internal(*to, *from, flags, touched, &result);
            else if (from)
                addField(*from, std::string(sources.nameAt(i)), slot, matcher.isFurther());
        }
    }

    std::vector<std::pair<std::uint64_t, std::shared_ptr<AttrContainer>>> surplusFields() {
        FieldNames const sources(source);
        FieldNames const targets(target);
        NameMatcher<FieldNames> matcher(targets, sources, false);
        std::sort(addedFields.begin(), addedFields.end());
        std::vector<std::pair<std::uint64_t, std::shared_ptr<AttrContainer>>> surplus;
        for (std::uint64_t i = 0; i < targets.size(); ++i) {
            std::uint64_t const match = matcher.match(i, targets.nameAt(i));
            auto const& field = targets.at(i);
            if (field && !sources.at(match) &&
                !std::binary_search(addedFields.begin(), addedFields.end(), field))
                surplus.emplace_back(i, field);
        }
        return surplus;
    }

    void removeFields() {
        auto surplus = surplusFields();
        if (surplus.empty())
            return;
        FieldNames const targets(target);
        auto* fields = ContainerAccess::fields(target);
        RemovalOrder order(fields->size(), fields->hasDistinctNames());
        for (; !surplus.empty(); surplus.pop_back()) {
            auto const& [slot, field] = surplus.back();
            ++result.removedFields;
            // A hook may have moved the field.
            std::uint64_t const token =
                targets.at(slot) == field ? fields->getFirstToken() + slot : target.getFieldToken(*field);
            if (token == none)
                continue;
            target.rmField(token);
            if (token - fields->getFirstToken() >= fields->getMinCapacity())
                order.removed(token - fields->getFirstToken());
        }
        order.restore(*fields, [&](std::uint64_t token, std::shared_ptr<AttrContainer> field,
                                   std::string const&) { fields->setElement(token, std::move(field)); });
    }
};

void AttrContMerger::merge(AttrContainer& target, AttrContainer const& source, unsigned int flags,
                           Result* result) {
    auto const targetHeld = ObservationAccess::hold(target); // Observers may let go of both.
    auto const sourceHeld = ObservationAccess::hold(source);
    Touched touched;
    Result uncounted;
    merge_Internal(target, source, flags, touched, result ? result : &uncounted);
    if ((flags & (TRIGGER_OBSERVERS_AFTER_MERGE_IS_COMPLETE | BLOCK_OBSERVERS)) !=
        TRIGGER_OBSERVERS_AFTER_MERGE_IS_COMPLETE)
        return;
    for (auto const& one : touched)
        if (auto const attribute = one.lock())
            attribute->touch(nullptr, nullptr);
}

void AttrContMerger::merge_Internal(AttrContainer& target, AttrContainer const& source, unsigned int flags,
                                    Touched& touched, Result* result) {
    // One that is above itself would be taken over by, or take over, what is below it.
    TraversalPath const targetPath(&touched, &target);
    TraversalPath const sourcePath(&touched, nullptr, &source);
    if (!targetPath.isEntered() || !sourcePath.isEntered())
        return;
    Merging merging{target, source, flags, touched, *result};
    merging.assignAttributes();
    if (!merging.has(KEEP_NON_EXISTENT_IN_SOURCE))
        merging.removeAttributes();
    merging.mergeFields();
    if (!merging.has(KEEP_NON_EXISTENT_IN_SOURCE))
        merging.removeFields();
}

// --- AttrContInfoSetter

AttrContInfoSetter::AttrContInfoSetter(std::weak_ptr<AttrContainer> target,
                                       std::shared_ptr<AttrContainer> info)
    : target_(std::move(target)) {
    if (auto const container = target_.lock(); container && info)
        container->addAttrContInfo(std::move(info));
}

AttrContInfoSetter::AttrContInfoSetter(AttrContInfoSetter const&) = default;
AttrContInfoSetter& AttrContInfoSetter::operator=(AttrContInfoSetter const&) = default;

AttrContInfoSetter::~AttrContInfoSetter() {
    if (auto const container = target_.lock())
        container->rmAttrContInfo();
}

} // namespace Zorvan::AttributeContainer
