// SPDX-License-Identifier: MIT
#include "Process.h"

#include <utility>

namespace kxmodel {

std::string runProgram(std::string const& program, std::vector<std::string> const& arguments,
                       std::string const& input) {
    ProgramEnd end = runToEnd(program, arguments, input);
    if (end.status != 0)
        throw ProcessError(program, "ended with status " + std::to_string(end.status) + ": " +
                                        end.err.substr(0, end.err.find('\n')));
    return std::move(end.out);
}

} // namespace kxmodel
