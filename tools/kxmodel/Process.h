// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace kxmodel {

/// Another program could not be started, or ended badly; the message says why.
class ProcessError : public std::runtime_error {
public:
    ProcessError(std::string const& program, std::string const& reason)
        : std::runtime_error("\"" + program + "\" " + reason) {}
};

/// How a program ended, -1 when it was killed, and what it wrote to its standard streams.
struct ProgramEnd {
    int status;
    std::string out, err;
};

/// Runs a program, which is searched for as the system does it, to its end. No shell takes part. It reads
/// `input` from its standard input. Throws ProcessError when it cannot be started.
ProgramEnd runToEnd(std::string const& program, std::vector<std::string> const& arguments,
                    std::string const& input);

/// What a program writes to its standard output. Throws ProcessError also when it is killed or ends with a
/// status other than 0 (with the first line of what it wrote to standard error then).
std::string runProgram(std::string const& program, std::vector<std::string> const& arguments,
                       std::string const& input);

} // namespace kxmodel
