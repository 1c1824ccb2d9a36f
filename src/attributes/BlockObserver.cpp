// SPDX-License-Identifier: MIT
#include <AttributeContainer/BlockObserver.h>

#include <AttributeContainer/WtAttribute.h>

namespace Zorvan::AttributeContainer {

BlockObserver::BlockObserver() : hasSet_(!Attribute::isObservingBlocked()) {
    if (hasSet_)
        Attribute::setObservingBlocked(true);
}

BlockObserver::~BlockObserver() {
    if (hasSet_)
        Attribute::setObservingBlocked(false);
}

} // namespace Zorvan::AttributeContainer
