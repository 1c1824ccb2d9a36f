// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>
#include <AttributeContainer/ModelInFormat.h>
#include <AttributeContainer/ReadContextBase.h>

#include <iosfwd>
#include <memory>

namespace Zorvan::AttributeContainer {

/// Binds a stream, a reader and a context for the duration of one readFrom. Scopes nest; the innermost holds
/// the look-ahead of its stream.
class KX_ATTRIBUTECONTAINER_API ReadFromScope {
public:
    /// Reads with a context of its own, of default options.
    explicit ReadFromScope(std::istream& in);
    /// Reads with `context`; null: as above.
    ReadFromScope(std::istream& in, std::shared_ptr<ReadContextBase const> context);
    virtual ~ReadFromScope();
    ReadFromScope(ReadFromScope const&) = delete;
    ReadFromScope& operator=(ReadFromScope const&) = delete;

    /// The reader, set to the context's rendering. It lives as long as the scope.
    ModelInFormat& getImf();
    /// Never null.
    std::shared_ptr<ReadContextBase const> getReadContext() const { return context_; }

private:
    ModelInFormat imf_;
    std::shared_ptr<ReadContextBase const> context_;
};

} // namespace Zorvan::AttributeContainer
