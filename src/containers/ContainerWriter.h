// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/ErrorCode.h>
#include <AttributeContainer/WriteContextBase.h>
#include <AttributeContainer/WtAttrContainer.h>

#include <iosfwd>
#include <memory>
#include <string>

namespace Zorvan::AttributeContainer {

/// Writes one member of a container with its block: a field ("SubContainer") or a child ("Child"). An
/// instance that was written before is written as a reference when the context collects shared instances.
[[nodiscard]] Result writeMemberBlock(std::ostream& out,
                                      std::shared_ptr<WriteContextBase const> const& context,
                                      std::string const& keyword, std::string const& name,
                                      AttrContainer& member);

} // namespace Zorvan::AttributeContainer
