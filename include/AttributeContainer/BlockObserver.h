// SPDX-License-Identifier: MIT
#pragma once

#include <AttributeContainer/Export.h>

namespace Zorvan::AttributeContainer {

/// Blocks observation on the calling thread for a scope: values are stored, nobody is asked or told. Nested
/// scopes keep the thread blocked until the outermost one ends. A scope ends on the thread on which it began;
/// other threads go on observing.
class KX_ATTRIBUTECONTAINER_API BlockObserver {
public:
    BlockObserver();
    ~BlockObserver();
    BlockObserver(BlockObserver const&) = delete;
    BlockObserver& operator=(BlockObserver const&) = delete;

private:
    bool hasSet_; ///< This scope has set the switch.
};

} // namespace Zorvan::AttributeContainer
