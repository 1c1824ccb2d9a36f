// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace kxmodel {

/// Another program could not be started, or ended badly; the message says why.
class ProcessError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Runs a program, which is searched for as the system does it, and returns what it wrote to its standard
/// output. No shell takes part. It reads `input` from its standard input. Throws ProcessError when it cannot
/// be started, is killed or ends with a status other than 0 (with the first line of what it wrote to standard
/// error then).
std::string runProgram(std::string const& program, std::vector<std::string> const& arguments,
                       std::string const& input);

} // namespace kxmodel
