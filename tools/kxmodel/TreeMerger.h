// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/AttrContMerger.h>
#include <AttributeContainer/WtAttrContainer.h>

namespace kxmodel {

/// Merges a tree, child objects included, into another one; nobody observes it. Members are matched as in a
/// comparison. One that is of another class, or a placeholder that would write another text, is replaced
/// whole. What only the target has stays unless `deletesSurplus`.
///
/// Children count as fields do, whole subtrees as one. What is replaced counts as one removed and one added.
/// Throws std::runtime_error when the source has children and the target can have none.
Zorvan::AttributeContainer::AttrContMerger::Result
mergeTrees(Zorvan::AttributeContainer::AttrContainer& target,
           Zorvan::AttributeContainer::AttrContainer& source, bool deletesSurplus);

} // namespace kxmodel
