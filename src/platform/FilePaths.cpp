// SPDX-License-Identifier: MIT
#include "platform/FilePaths.h"

#include <algorithm>
#include <cstddef>

namespace Zorvan::AttributeContainer {

std::filesystem::path savingPath(std::filesystem::path const& path) {
    constexpr std::size_t maxNameLength = 255;
    std::filesystem::path const ending = ".kx-saving";
    auto name = path.filename().native();
    name.resize(std::min(name.size(), maxNameLength - ending.native().size()));
    return path.parent_path() / std::filesystem::path(name + ending.native());
}

} // namespace Zorvan::AttributeContainer
