// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace Zorvan::AttributeContainer {

/// Whether `name` (UTF-8) can be the name of an XML element.
bool isXmlName(std::string_view name);

} // namespace Zorvan::AttributeContainer
