// SPDX-License-Identifier: MIT
#pragma once

#include "observation/LinkReading.h"

#include <AttributeContainer/WtAttrContainer.h>

#include <iosfwd>
#include <optional>

namespace Zorvan::AttributeContainer {

/// One running `writeTo` of a container. The outermost one of a stream is where absolute paths of links
/// start.
class WritingScope {
public:
    WritingScope(std::ostream& out, AttrContainer& container);
    ~WritingScope();
    WritingScope(WritingScope const&) = delete;
    WritingScope& operator=(WritingScope const&) = delete;

    /// The container lies deeper than a document may nest: it could not be read again.
    bool isTooDeep() const;
    /// Whether a container is being written already, further up on this stream: it is an ancestor of itself.
    static bool isBeingWritten(std::ostream& out, AttrContainer const& container);

private:
    std::ostream const* out_;
    AttrContainer const& container_;
    WritingScope* enclosing_;
    int depth_ = 1;
    std::optional<PathRootScope> root_;
};

} // namespace Zorvan::AttributeContainer
