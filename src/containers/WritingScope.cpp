// SPDX-License-Identifier: MIT
#include "containers/WritingScope.h"

#include "containers/ReadingScope.h"

namespace Zorvan::AttributeContainer {

namespace {

constinit thread_local WritingScope* innermost = nullptr;

} // namespace

WritingScope::WritingScope(std::ostream& out, AttrContainer& container)
    : out_(&out), container_(container), enclosing_(innermost) {
    if (enclosing_ && enclosing_->out_ == &out)
        depth_ = enclosing_->depth_ + (&enclosing_->container_ == &container ? 0 : 1);
    else
        root_.emplace(std::static_pointer_cast<AttrContainer>(container.shared_from_this()));
    innermost = this;
}

WritingScope::~WritingScope() { innermost = enclosing_; }

bool WritingScope::isTooDeep() const { return depth_ > maxContainerDepth; }

bool WritingScope::isBeingWritten(std::ostream& out, AttrContainer const& container) {
    for (auto const* one = innermost; one && one->out_ == &out; one = one->enclosing_)
        if (&one->container_ == &container)
            return true;
    return false;
}

} // namespace Zorvan::AttributeContainer
