// SPDX-License-Identifier: MIT
#pragma once

namespace Zorvan::AttributeContainer {

class ChangeProbe;
class NotifyInfoTable;
class Observable;
class ObserverWalk;

/// What a thread does with observables at the moment. It is all in one place because finding it costs a call:
/// what needs it more than once keeps a reference.
struct NotifyingThread {
    ObserverWalk* innermostNotification = nullptr;
    Observable const* held = nullptr; ///< that of the innermost scope of a HeldObservable
    ChangeProbe* innermostProbe = nullptr;
    NotifyInfoTable* notes = nullptr; ///< null when no observable has any
    int attributeSwitches = 0;        ///< bits of the attributes
};

/// The calling thread's.
inline constinit thread_local NotifyingThread notifyingThread;

} // namespace Zorvan::AttributeContainer
