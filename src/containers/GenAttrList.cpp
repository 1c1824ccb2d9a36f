// SPDX-License-Identifier: MIT
#include "containers/GenAttrListImpl.h"

#include <AttributeContainer/WtAttrContainer.h>

namespace Zorvan::AttributeContainer {

template class GenAttrList<Attribute>;
template class GenAttrList<AttrContainer>;

} // namespace Zorvan::AttributeContainer
