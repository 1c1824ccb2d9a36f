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

fs::path realFile(fs::path const& path, std::error_code& error) {
    constexpr int maxLinks = 40;
    fs::path result = path;
    for (int i = 0; i < maxLinks; ++i) {
        std::error_code ignored;
        if (!fs::is_symlink(result, ignored))
            return result;
        fs::path const target = fs::read_symlink(result, error);
        if (error)
            return {};
        result = result.parent_path() / target;
    }
    error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
    return {};
}

} // namespace kxmodel
