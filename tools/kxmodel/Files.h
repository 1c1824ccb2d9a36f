// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace kxmodel {

/// A file that could not be read or written: its name and the reason.
class FileError : public std::runtime_error {
public:
    FileError(std::string file, std::string const& reason)
        : std::runtime_error(reason), file_(std::move(file)) {}
    std::string const& file() const { return file_; }

private:
    std::string file_;
};

/// How messages name a path: "-" is standard input or output.
std::string inputName(std::string const& path);
std::string outputName(std::string const& path);

/// The whole content of a file, of standard input for "-". Throws FileError.
std::string readAll(std::string const& path);

/// Makes `content` the content of a file, or writes it to standard output for "-" and "/dev/stdout". A file
/// is replaced whole, as replaceFile() says, and is reached through symbolic links; devices and pipes are
/// written to directly. Throws FileError; the old file is as before then.
void writeAll(std::string const& path, std::string const& content);

} // namespace kxmodel
