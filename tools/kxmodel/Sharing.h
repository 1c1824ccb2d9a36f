// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/WtAttrContainer.h>

namespace kxmodel {

/// Whether a tree stays of a sensible size and depth when every container that is shared stands by itself
/// wherever it is met. A small document may refer to its shared instances so that each level doubles what is
/// below it; copying or writing such a tree without sharing would never end.
bool canBeUnshared(Zorvan::AttributeContainer::AttrContainer& root);

} // namespace kxmodel
