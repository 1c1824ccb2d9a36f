// SPDX-License-Identifier: MIT
#include <AttributeContainer/WriteToScope.h>

#include <utility>

namespace Zorvan::AttributeContainer {

WriteToScope::WriteToScope(std::ostream& out, std::shared_ptr<WriteContextBase const> context)
    : mof_(out),
      context_(context ? std::move(context) : std::make_shared<WriteContextBase>(ModelFormat::Text)) {
    mof_.setFormat(context_->getFormat());
}

WriteToScope::~WriteToScope() = default;

ModelOutFormat& WriteToScope::getMof() {
    mof_.setFormat(context_->getFormat());
    return mof_;
}

} // namespace Zorvan::AttributeContainer
