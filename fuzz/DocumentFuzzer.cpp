// SPDX-License-Identifier: MIT
// Documents of either rendering.
#include "DocumentChecks.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    fuzzing::checkDocument(std::string(reinterpret_cast<char const*>(data), size));
    return 0;
}
