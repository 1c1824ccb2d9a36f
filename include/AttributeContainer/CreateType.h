// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace Zorvan::AttributeContainer {

/// How a container or an attribute is made from a source.
enum class CreateType : std::uint32_t {
    Deep = 0,           ///< Values are copied, fields are duplicated with everything below them.
    ShareFields = 1,    ///< Values are copied, the copy holds the very same field instances.
    ShareFieldsAlt = 2, ///< As ShareFields in this library; a value that applications may give a meaning.
    Blank = 3           ///< A default instance of the same class.
};

} // namespace Zorvan::AttributeContainer
