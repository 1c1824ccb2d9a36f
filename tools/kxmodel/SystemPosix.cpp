// SPDX-License-Identifier: MIT
#include "System.h"

#include <unistd.h>

namespace fs = std::filesystem;

namespace kxmodel {

StandardStreams::StandardStreams() noexcept = default;

StandardStreams::~StandardStreams() = default;

std::vector<std::string> argumentsOf(int argc, char** argv) {
    return argc > 0 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

fs::path pathOf(std::string const& text) { return text; }

std::FILE* openFile(fs::path const& path, char const* mode) noexcept {
    return std::fopen(path.c_str(), mode);
}

bool isErrorTerminal() noexcept { return isatty(STDERR_FILENO) != 0; }

} // namespace kxmodel
