// SPDX-License-Identifier: MIT
#pragma once

namespace Zorvan::AttributeContainer {

/// The bits of the per-thread switches of attributes.
enum AttributeSwitch : int { CachedAttributePending = 1, ObservingBlocked = 2 };

/// The calling thread's switches.
inline constinit thread_local int attributeSwitches = 0;

} // namespace Zorvan::AttributeContainer
