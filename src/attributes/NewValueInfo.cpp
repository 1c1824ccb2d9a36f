// SPDX-License-Identifier: MIT
#include <AttributeContainer/NewValueInfo.h>

namespace Zorvan::AttributeContainer {

std::string const& newValueInfoClassName() {
    static std::string const& name = *new std::string("NewValueInfo<T>");
    return name;
}

} // namespace Zorvan::AttributeContainer
