// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>
#include <AttributeContainer/ModelOutFormat.h>
#include <AttributeContainer/WriteContextBase.h>

#include <iosfwd>
#include <memory>

namespace Zorvan::AttributeContainer {

/// Binds a stream, a writer and a context for the duration of one writeTo.
class KX_ATTRIBUTECONTAINER_API WriteToScope {
public:
    /// Writes with `context`; null: with one of its own, that writes the text rendering.
    WriteToScope(std::ostream& out, std::shared_ptr<WriteContextBase const> context);
    virtual ~WriteToScope();
    WriteToScope(WriteToScope const&) = delete;
    WriteToScope& operator=(WriteToScope const&) = delete;

    /// The writer, set to the context's rendering. It lives as long as the scope.
    ModelOutFormat& getMof();
    /// Never null.
    std::shared_ptr<WriteContextBase const> getWriteContext() const { return context_; }

private:
    ModelOutFormat mof_;
    std::shared_ptr<WriteContextBase const> context_;
};

} // namespace Zorvan::AttributeContainer
