// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ErrorCode.h>

#include <memory>

namespace Zorvan::AttributeContainer {

/// A new error of this library, raised at `line` of the module `file`.
[[nodiscard]] inline Result makeError(char const* file, int line, ErrorCode code) {
    return std::make_unique<ErrorHandling::ErrorWithCode<ErrorCode>>(file, line, code);
}

} // namespace Zorvan::AttributeContainer
