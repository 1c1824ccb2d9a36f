// SPDX-License-Identifier: MIT
#include "attributes/AttrImpl.h"

namespace Zorvan::AttributeContainer {

KX_ATTR_TYPES_GEOMETRY(KX_INSTANTIATE_ATTR)

} // namespace Zorvan::AttributeContainer
