// SPDX-License-Identifier: MIT
#include <AttributeContainer/ObservingObject.h>

namespace Zorvan::AttributeContainer {

ObservingObject::~ObservingObject() = default;

} // namespace Zorvan::AttributeContainer
