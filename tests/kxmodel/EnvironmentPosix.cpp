// SPDX-License-Identifier: MIT
#include "Program.h"

#include <stdlib.h>

namespace kxmodel_test {

bool const hasPosixFiles = true;

void setVariable(std::string const& name, std::string const& value) {
    ::setenv(name.c_str(), value.c_str(), 1);
}

} // namespace kxmodel_test
