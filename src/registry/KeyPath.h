// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// The path of keys that leads on from `base` along `name`, without its empty components.
[[nodiscard]] std::string joinKeyPath(std::string_view base, std::string_view name);

/// The path in the form that is equal for all paths which lead to the same key.
[[nodiscard]] std::string foldKeyPath(std::string_view path);

} // namespace Zorvan::AttributeContainer
