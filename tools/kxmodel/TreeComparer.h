// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/WtAttrContainer.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kxmodel {

/// One difference of two trees.
struct Difference {
    enum class Kind {
        Changed,      ///< an attribute has another value
        TypeChanged,  ///< an attribute has another type
        ClassChanged, ///< a container is of another class
        OnlyFirst,    ///< the second tree has no such attribute, or container
        OnlySecond,   ///< the first tree has no such attribute, or container
        Content,      ///< a placeholder of an unknown class would write another text
        Links         ///< an attribute or container has other observer links
    };

    /// As `get` and `set` take it where it names an attribute: in the first tree, in the second one for what
    /// is there only.
    std::string path;
    Kind kind = Kind::Changed;
    /// The value type, or a container's class; "A -> B" when the sides differ.
    std::string type;
    /// The values in the text form of documents, class names, kept texts, or links. Empty text for a
    /// container that is on one side only; nothing for the side that has nothing.
    std::optional<std::string> first;
    std::optional<std::string> second;
};

/// "changed", "type-changed", and so on.
char const* nameOf(Difference::Kind kind);

struct CompareOptions {
    bool isApproximate = false; ///< Floating-point values are compared within the library's tolerances.
    bool countsOnlyFirst = true;
    bool countsOnlySecond = true;
    int categories = -1;              ///< Attributes whose category shares no bit with it are left out.
    std::vector<std::string> ignored; ///< Names of attributes, fields and children that are left out.
    bool comparesLinks = false;       ///< Those of what both trees have.
};

/// The differences of two trees in the order of the first, each container's own before those of its fields
/// and children; what only the second has comes last in its container.
///
/// A subtree that is on one side only is listed attribute by attribute, a container in it that has none to
/// list by itself. Containers that are shared within a tree are compared, or listed, where they are met
/// first; further on a one-sided one is named only. Placeholders of unknown classes are compared by their
/// texts, not entered, and not compared at all with containers of another class.
std::vector<Difference> compareTrees(Zorvan::AttributeContainer::AttrContainer& first,
                                     Zorvan::AttributeContainer::AttrContainer& second,
                                     CompareOptions const& options);

} // namespace kxmodel
