// SPDX-License-Identifier: MIT
#include "platform/FilePaths.h"

namespace Zorvan::AttributeContainer {

namespace fs = std::filesystem;

fs::path followLinks(fs::path const& path, std::error_code& error) {
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

} // namespace Zorvan::AttributeContainer
