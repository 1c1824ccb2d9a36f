// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace kxmodel {

/// While it lives, the standard streams carry bytes as they are, and a console takes them for UTF-8.
class StandardStreams {
public:
    StandardStreams() noexcept;
    ~StandardStreams(); // NOLINT(performance-trivially-destructible): not on every system
    StandardStreams(StandardStreams const&) = delete;
    StandardStreams& operator=(StandardStreams const&) = delete;

private:
    [[maybe_unused]] unsigned consoleCodePage_ = 0; ///< to be restored; only some systems have one
};

/// The arguments behind the program's name, in UTF-8 where the system knows what characters they are.
std::vector<std::string> argumentsOf(int argc, char** argv);

/// The path that a text in UTF-8 means. Without this, libraries take text for the encoding of the system.
std::filesystem::path pathOf(std::string const& text);

/// `std::fopen` for every name that a file can have.
std::FILE* openFile(std::filesystem::path const& path, char const* mode) noexcept;

/// Whether somebody sees what is written to standard error at once.
bool isErrorTerminal() noexcept;

} // namespace kxmodel
