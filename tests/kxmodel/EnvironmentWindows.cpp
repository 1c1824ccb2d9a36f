// SPDX-License-Identifier: MIT
#include "Program.h"

#include <windows.h>

namespace kxmodel_test {

bool const hasPosixFiles = false;

void setVariable(std::string const& name, std::string const& value) {
    SetEnvironmentVariableW(pathOf(name).c_str(), pathOf(value).c_str());
}

} // namespace kxmodel_test
