// SPDX-License-Identifier: MIT
#include "containers/WritingScope.h"

#include "containers/ReadingScope.h"

#include <AttributeContainer/FallbackObject.h>
#include <AttributeContainer/UnknownAttrContainer.h>

namespace Zorvan::AttributeContainer {

namespace {

constinit thread_local WritingScope* innermost = nullptr;

} // namespace

WritingScope::WritingScope(std::ostream& out, AttrContainer& container)
    : out_(&out), container_(container), enclosing_(innermost),
      outermost_(enclosing_ ? enclosing_->outermost_ : this) {
    if (enclosing_ && enclosing_->out_ == &out)
        depth_ = enclosing_->depth_ + (&enclosing_->container_ == &container ? 0 : 1);
    else
        root_.emplace(std::static_pointer_cast<AttrContainer>(container.shared_from_this()));
    innermost = this;
}

WritingScope::~WritingScope() { innermost = enclosing_; }

bool WritingScope::isTooDeep() const { return depth_ > maxContainerDepth; }

std::string const& WritingScope::documentClassName(AttrContainer const& container) {
    auto const** const plainClass = innermost ? &innermost->outermost_->plainClass_ : nullptr;
    if (plainClass && *plainClass == &typeid(container))
        return container.getClassName();
    if (auto const* fallback = dynamic_cast<IFallbackObject const*>(&container))
        return fallback->getFallbackClassName();
    if (auto const* unknown = dynamic_cast<UnknownAttrContainer const*>(&container))
        return unknown->getTypeName();
    if (plainClass)
        *plainClass = &typeid(container);
    return container.getClassName();
}

bool WritingScope::isBeingWritten(std::ostream& out, AttrContainer const& container) {
    for (auto const* one = innermost; one && one->out_ == &out; one = one->enclosing_)
        if (&one->container_ == &container)
            return true;
    return false;
}

} // namespace Zorvan::AttributeContainer
