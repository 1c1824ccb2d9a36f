// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ErrorCode.h>

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

namespace Zorvan::AttributeContainer {

class ReadContextBase;
class WriteContextBase;

/// What a document says of one link.
struct LinkText {
    short priority = 0;
    std::optional<std::string> path;
    std::optional<std::string> action;
};

/// Reads an "ObserverPath" block, from its opener or from its first entry on, and leaves the keyword behind
/// its "}" current. What was read before an error is in `link`.
[[nodiscard]] Result readLinkBlock(std::istream& in, std::shared_ptr<ReadContextBase const> const& context,
                                   LinkText& link);

/// Writes the same block.
[[nodiscard]] Result writeLinkBlock(std::ostream& out, std::shared_ptr<WriteContextBase const> const& context,
                                    LinkText const& link);

} // namespace Zorvan::AttributeContainer
