// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kxmodel_test {

/// The files that a program's standard streams are.
struct Streams {
    std::filesystem::path in, out, err;
};

/// Runs a program with UTF-8 arguments to its end; no shell is between. Its exit status, -1 when it could not
/// be started or was ended by a signal or an exception.
int runProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments,
               Streams const& streams);

/// Sets a variable of the environment of this program and of those that it runs.
void setVariable(std::string const& name, std::string const& value);

// Paths and their texts in UTF-8 on every system.
inline std::filesystem::path pathOf(std::string const& text) {
    return std::u8string(text.begin(), text.end());
}
inline std::string textOf(std::filesystem::path const& path) {
    auto const text = path.u8string();
    return std::string(text.begin(), text.end());
}

/// Whether names of files are any bytes, files have permissions for a group, symbolic links can be made,
/// "/dev/full" is a full disk, and there is a shell.
extern bool const hasPosixFiles;

} // namespace kxmodel_test
