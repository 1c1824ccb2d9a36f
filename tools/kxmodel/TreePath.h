// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/WtAttrContainer.h>
#include <AttributeContainer/WtAttribute.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace kxmodel {

/// Appends a step to a path: "/", the name, and "[n]" when `ordinal` is above 1. The ordinal counts, from 1,
/// what has exactly the same name in the same container: attributes in the order of their tokens; children in
/// their order and then fields. What the syntax of paths uses is escaped by a backslash, so that a path can
/// have every name.
void appendStep(std::string& path, std::string_view name, std::size_t ordinal);

/// What a path names.
struct PathTarget {
    std::shared_ptr<Zorvan::AttributeContainer::AttrContainer> container;
    std::shared_ptr<Zorvan::AttributeContainer::Attribute> attribute;
    std::string why; ///< The step that failed; empty when the attribute was found.
};

/// Finds the attribute that a path such as "/Fiji/bounds/points" names: children or fields of the root (whose
/// own name is no part of it), then an attribute. The first "/" may be left out. A name that is there exactly
/// is preferred to one that differs in letter case, then a child to a field. "/A[2]/x" goes through the
/// second "A".
PathTarget resolvePath(std::shared_ptr<Zorvan::AttributeContainer::AttrContainer> const& root,
                       std::string_view path);

/// Whether two names differ in nothing but the case of ASCII letters.
bool isSimilar(std::string_view a, std::string_view b);

/// Where the first "=" stands that no backslash escapes; npos without one.
std::size_t findAssignment(std::string_view text);

} // namespace kxmodel
