// SPDX-License-Identifier: MIT
#pragma once

#include "observation/LinkReading.h"

#include <AttributeContainer/WtAttrContainer.h>

#include <iosfwd>
#include <optional>
#include <string>
#include <typeinfo>

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
    /// The name that a document gives the class of a container: a placeholder's is the one that it was read
    /// under.
    static std::string const& documentClassName(AttrContainer const& container);
    /// Whether a container is being written already, further up on this stream: it is an ancestor of itself.
    static bool isBeingWritten(std::ostream& out, AttrContainer const& container);

private:
    std::ostream const* out_;
    AttrContainer const& container_;
    WritingScope* enclosing_;
    /// The class of which the last one that is no placeholder was, in the outermost scope: most trees have
    /// few classes, and asking for both bases takes as long as writing an attribute.
    std::type_info const* plainClass_ = nullptr;
    WritingScope* outermost_;
    int depth_ = 1;
    std::optional<PathRootScope> root_;
};

} // namespace Zorvan::AttributeContainer
