// SPDX-License-Identifier: MIT
#include <AttributeContainer/ReadFromScope.h>

#include <utility>

namespace Zorvan::AttributeContainer {

ReadFromScope::ReadFromScope(std::istream& in) : ReadFromScope(in, nullptr) {}

ReadFromScope::ReadFromScope(std::istream& in, std::shared_ptr<ReadContextBase const> context)
    : imf_(in), context_(context ? std::move(context) : std::make_shared<ReadContextBase>()) {
    imf_.setFormat(context_->getFormat());
}

ReadFromScope::~ReadFromScope() = default;

ModelInFormat& ReadFromScope::getImf() {
    imf_.setFormat(context_->getFormat());
    return imf_;
}

} // namespace Zorvan::AttributeContainer
