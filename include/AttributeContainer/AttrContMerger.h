// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace Zorvan::AttributeContainer {

class Attribute;
class AttrContainer;

/// Makes a container tree take over the state of another one.
///
///     AttrContMerger::Result counters;
///     AttrContMerger::merge(*target, *source, AttrContMerger::ASSIGN_ONLY_CHANGED_VALUES, &counters);
///
/// Attributes and fields are matched by name, the n-th of several with one name with the n-th, and all the
/// way down through the fields; children of objects are not touched. At each level, in this order:
/// 1. Values that differ are assigned, attributes that the target lacks are copied into it.
/// 2. Attributes that the source lacks are removed.
/// 3. Fields that both have are merged, fields that the target lacks are copied into it.
/// 4. Fields that the source lacks are removed, except those that this call has added.
///
/// Observers run during the merge, and may do anything, also let go of both trees.
class KX_ATTRIBUTECONTAINER_API AttrContMerger {
public:
    /// Attributes with equal values are left alone; without it they are touched, so that their observers are
    /// told although nothing changed.
    static constexpr unsigned int ASSIGN_ONLY_CHANGED_VALUES = 1;
    /// What only the target has stays.
    static constexpr unsigned int KEEP_NON_EXISTENT_IN_SOURCE = 2;
    /// Only marked attributes of the source are assigned or copied in. Removal and fields heed no marks.
    static constexpr unsigned int CONSIDER_ONLY_MARKED = 4;
    /// Attributes of the target that changed or were copied in are marked.
    static constexpr unsigned int MARK_CHANGED_WITH_AUXILIARY = 8;
    /// Values are assigned while observation is blocked (nobody can refuse them), and the attributes are
    /// touched in their order when the merge is complete. One that is gone by then is passed over.
    static constexpr unsigned int TRIGGER_OBSERVERS_AFTER_MERGE_IS_COMPLETE = 16;
    /// Values are assigned while observation is blocked, and nobody is told. Stronger than the flag before.
    static constexpr unsigned int BLOCK_OBSERVERS = 32;

    /// What was done. `merge` adds to the counters and never clears them.
    struct Result {
        std::uint32_t changed = 0;           ///< Attributes that received a different value.
        std::uint32_t unchanged = 0;         ///< Attributes whose value equalled the source's.
        std::uint32_t addedAttributes = 0;   ///< Attributes copied into the target, also refused ones.
        std::uint32_t removedAttributes = 0; ///< Attributes the source lacks, also declared ones, which stay.
        std::uint32_t addedFields = 0;       ///< Fields copied into the target.
        std::uint32_t removedFields = 0;     ///< Fields the source lacks.
    };

    /// Merges `source` into `target`; `flags` are combined with `|`, `result` may be null.
    ///
    /// Without the flags 16 and 32 a value that differs is announced twice, by its assignment and by a touch
    /// behind it; an assignment that a pre-observer refuses changes, counts, marks and announces nothing.
    /// With them, observation is blocked on the calling thread for each assignment only, and stays blocked
    /// where it was blocked before. What cannot be added (its name is refused) or removed (it is declared) is
    /// left as it is and counted all the same. The source may lie inside the target, or the target inside the
    /// source; merging a container with itself finds equal values only. A field that is shared is merged, or
    /// copied, in each of its places, which takes exponential time where the fields of every level are
    /// shared. Throws `std::length_error` where both trees, or one that is to be copied, have more than 512
    /// levels; whatever is thrown, what was merged before stays, and no deferred touch is made.
    static void merge(AttrContainer& target, AttrContainer const& source, unsigned int flags, Result* result);

private:
    /// The attributes that are touched when the merge is complete.
    using Touched = std::vector<std::weak_ptr<Attribute>>;
    struct Merging;

    static void merge_Internal(AttrContainer& target, AttrContainer const& source, unsigned int flags,
                               Touched& touched, Result* result);
};

/// Attaches an info container to a container (AttrContainer::addAttrContInfo) and detaches it when the scope
/// ends, if the container still lives. Of several copies the first that goes detaches it.
class KX_ATTRIBUTECONTAINER_API AttrContInfoSetter {
public:
    /// Nothing is attached when either is empty.
    AttrContInfoSetter(std::weak_ptr<AttrContainer> target, std::shared_ptr<AttrContainer> info);
    /// The copy refers to the same container.
    AttrContInfoSetter(AttrContInfoSetter const& other);
    /// Refers to the container of the other from now on; the former one keeps its info.
    AttrContInfoSetter& operator=(AttrContInfoSetter const& other);
    ~AttrContInfoSetter();

private:
    std::weak_ptr<AttrContainer> target_;
};

} // namespace Zorvan::AttributeContainer
