// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Zorvan::AttributeContainer {

class Attribute;
class AttrContainer;

/// Counts the differences of two container trees. Attributes and fields are matched by name (the n-th of
/// several with one name with the n-th), fields are entered, children of objects are not.
///
///     AttrContComparer exact;
///     exact.compare(*before, *after);    // 0: every attribute is there on both sides, with equal values
///     AttrContComparer near(-1, AttrContComparer::WithTolerances);
///     near.compare(*before, *after);     // 1.000001 and 1.000004 are no difference
///
/// Derived classes react to each difference and to each descent through the protected hooks; they may do
/// anything except change the lists of the two trees. Nothing is changed or notified by a comparison. A pair
/// of containers that is being compared already further up is not entered again; one that is shared is
/// compared in each of its places, which takes exponential time where the fields of every level are shared.
/// One comparer runs one comparison at a time.
class KX_ATTRIBUTECONTAINER_API AttrContComparer {
public:
    using OptionalContainer = std::optional<std::reference_wrapper<AttrContainer const>>;

    /// The bits of the compare mode.
    enum CompareMode : int {
        IgnoreOnlyInSecond = 1, ///< What only the second tree has is no difference.
        IgnoreOnlyInFirst = 2,  ///< What only the first tree has is no difference.
        WithTolerances = 4      ///< Floating-point values of one type are compared within a tolerance.
    };

    /// Only attributes whose category (AttrContainer::getAttrCategory) shares a bit with `categories` take
    /// part; one of category 0 never does.
    AttrContComparer(int categories = -1, int compareMode = 0);
    /// Copies are for comparers that are not comparing.
    AttrContComparer(AttrContComparer const&);
    AttrContComparer& operator=(AttrContComparer const&);
    virtual ~AttrContComparer();

    /// The number of differences. Throws `std::length_error` for trees of more than 512 levels.
    std::uint64_t compare(AttrContainer const& first, AttrContainer const& second) const;

    /// The bits of the categories that take part.
    int getCategories() const { return categories_; }
    /// The bits of `CompareMode`.
    int getCompareMode() const { return compareMode_; }
    /// Holds from the next comparison on.
    void setCompareMode(int compareMode) { compareMode_ = compareMode; }

protected:
    /// Called first by `compare`; forgets what an earlier comparison has left.
    virtual void reset() const;
    /// A field is entered. What is absent in the first tree is entered with the field of the second, an empty
    /// slot with nothing.
    virtual void enterField(OptionalContainer field) const;
    /// The field that was entered last is left.
    virtual void exitField(OptionalContainer field) const;
    /// Two attributes differ, or one side has none (null). Returns how many differences that counts as: here
    /// 1, or 0 for values that are equal within the tolerance.
    virtual std::uint64_t handleAttributes(Attribute const* first, Attribute const* second) const;

    /// The differences of two containers and what is below them; either may be absent.
    std::uint64_t runComparison(OptionalContainer first, OptionalContainer second) const;
    /// The differences that a container makes which the other tree does not have.
    std::uint64_t addAttributes(OptionalContainer container, bool asSecond) const;
    /// Inside `enterField` of an empty slot: the name that the slot has in its container, or nothing.
    std::string const& getEmptySlotName() const { return emptySlotName_; }
    /// The fields on the way down to where the comparison is.
    std::deque<OptionalContainer> const& getFieldStack() const { return fieldStack_; }

private:
    std::uint64_t compareAttributes(AttrContainer const& first, AttrContainer const& second) const;
    std::uint64_t compareFields(AttrContainer const& first, AttrContainer const& second) const;
    std::uint64_t addOwnAttributes(AttrContainer const& container, bool asSecond) const;
    std::uint64_t addFields(AttrContainer const& container, bool asSecond) const;
    /// Compares what stands in a field, which is entered and left again.
    std::uint64_t inField(OptionalContainer field, OptionalContainer first, OptionalContainer second) const;
    /// Notes the name of a slot if no field stands in it.
    void noteSlot(AttrContainer const& parent, std::uint64_t slot) const;
    bool takesPart(AttrContainer const& container, std::uint64_t token) const;

    int categories_;
    int compareMode_;
    mutable std::deque<OptionalContainer> fieldStack_;
    mutable std::string emptySlotName_;
};

/// A comparer that lists the differences by their paths: "Body/Frame/Width" for an attribute "Width" of a
/// field named "Frame" in a field named "Body", "Width" at the top. A pair that the tolerance finds equal is
/// listed, although it is not counted.
class KX_ATTRIBUTECONTAINER_API AttrContComparerKeepDiffs : public AttrContComparer {
public:
    /// Compares all categories in mode 0.
    AttrContComparerKeepDiffs();
    AttrContComparerKeepDiffs(AttrContComparerKeepDiffs const&);
    AttrContComparerKeepDiffs& operator=(AttrContComparerKeepDiffs const&);
    ~AttrContComparerKeepDiffs() override;

    /// The number of paths of the last comparison.
    std::uint64_t getNumMismatches() const { return mismatches_.size(); }
    /// A path of the last comparison; nothing at or beyond the count.
    std::optional<std::string> getMismatch(std::uint64_t index) const;

protected:
    /// Forgets the paths, too.
    void reset() const override;
    /// Appends the field's own name to the path, an empty slot's name for an empty slot.
    void enterField(OptionalContainer field) const override;
    /// Takes back what entering the field has appended.
    void exitField(OptionalContainer field) const override;
    /// Lists the path of the pair.
    std::uint64_t handleAttributes(Attribute const* first, Attribute const* second) const override;

private:
    mutable std::string path_;
    mutable std::vector<std::size_t> pathLengths_; ///< Before each field that was entered.
    mutable std::vector<std::string> mismatches_;
};

/// A comparer that marks the attributes that differ, without notification and whether or not the trees are
/// constant.
class KX_ATTRIBUTECONTAINER_API AttrContComparerMarkDiffs : public AttrContComparer {
public:
    /// The bits of the marking mode.
    enum MarkingMode : int {
        MarkInFirst = 1, ///< The differing attribute of the first tree is marked.
        MarkInSecond = 2 ///< That of the second.
    };

    /// Compares all categories in mode 0.
    AttrContComparerMarkDiffs(int markingMode = MarkInFirst | MarkInSecond);
    AttrContComparerMarkDiffs(AttrContComparerMarkDiffs const&);
    AttrContComparerMarkDiffs& operator=(AttrContComparerMarkDiffs const&);
    ~AttrContComparerMarkDiffs() override;

    /// The bits of `MarkingMode`.
    int getMarkingMode() const { return markingMode_; }
    /// Holds from the next comparison on.
    void setMarkingMode(int markingMode) { markingMode_ = markingMode; }

protected:
    /// Marks the pair as the marking mode says.
    std::uint64_t handleAttributes(Attribute const* first, Attribute const* second) const override;

private:
    int markingMode_;
};

} // namespace Zorvan::AttributeContainer
