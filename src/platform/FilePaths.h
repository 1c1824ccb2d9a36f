// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <system_error>

namespace Zorvan::AttributeContainer {

/// The file that a path means: symbolic links are followed to their end, which need not be there.
[[nodiscard]] std::filesystem::path followLinks(std::filesystem::path const& path, std::error_code& error);

/// The file beside another one in which that one's new content is written.
[[nodiscard]] std::filesystem::path savingPath(std::filesystem::path const& path);

} // namespace Zorvan::AttributeContainer
