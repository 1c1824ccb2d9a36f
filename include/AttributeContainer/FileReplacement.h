// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

#include <optional>
#include <string>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// Makes `content` the content of a regular file, or of one that is not there yet: all of it, or nothing;
/// then the reason comes back, in English. It is how a document is saved that was written to memory. Throws
/// `std::bad_alloc` only.
///
/// `path` is UTF-8 on Windows, and the bytes that the system takes elsewhere. Symbolic links are followed to
/// their end, which need not be there, and stay.
///
/// The content is written to a file beside it, whose name has the ending ".kx-saving" (and is cut where
/// the system has no longer names), and which is moved when it is on the disk. A process that comes to a
/// sudden end leaves that one file; the next to save removes it. It is locked while it is written, so that
/// those who save the same file at once wait for one another, ten seconds at most; the last of them wins.
///
/// The file keeps its permissions and, as far as this process may, its owner and group; without the group
/// its members have no more rights than everybody. It must be writable itself, not only its folder. Other
/// hard links keep the old content.
[[nodiscard]] KX_ATTRIBUTECONTAINER_API std::optional<std::string> replaceFile(std::string const& path,
                                                                               std::string_view content);

} // namespace Zorvan::AttributeContainer
