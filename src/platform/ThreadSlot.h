// SPDX-License-Identifier: MIT
#pragma once

#include <new>

namespace Zorvan::AttributeContainer {

#if defined(_WIN32)

// With mingw-w64 the memory of `thread_local` objects may be gone before their destructors run, and reads as
// initialised anew. The system's own slots keep their values until they are handed to their callback.

/// A new slot, for the life of the process: empty in every thread. What a thread has left in it is handed to
/// `atThreadEnd` when the thread ends. There is no such slot left: ~0.
unsigned long makeThreadSlot(void (*atThreadEnd)(void*)) noexcept;
void* threadSlotValue(unsigned long slot) noexcept;
bool setThreadSlotValue(unsigned long slot, void* value) noexcept;

/// One pointer to a `T` for each thread, null at first. What it points to is deleted when the thread ends;
/// the pointer is null again before that.
template <class T>
class ThreadSlot {
public:
    [[nodiscard]] static T* get() noexcept { return static_cast<T*>(threadSlotValue(slot())); }

    /// Takes ownership, unless it throws: std::bad_alloc. To be called while the pointer is null.
    static void set(T* instance) {
        if (!setThreadSlotValue(slot(), instance))
            throw std::bad_alloc();
    }

private:
    static unsigned long slot() noexcept {
        static unsigned long const made = makeThreadSlot([](void* instance) {
            setThreadSlotValue(slot(), nullptr);
            delete static_cast<T*>(instance);
        });
        return made;
    }
};

#else

/// One pointer to a `T` for each thread, null at first. What it points to is deleted when the destructors of
/// the thread run; the pointer is null again before that. What it is set to afterwards is never deleted.
template <class T>
class ThreadSlot {
public:
    [[nodiscard]] static T* get() noexcept { return pointer(); }

    /// Takes ownership. To be called while the pointer is null.
    static void set(T* instance) {
        if (!hasEnded()) {
            static thread_local Reaper reaper;
            reaper.arm();
        }
        pointer() = instance;
    }

private:
    struct Reaper {
        Reaper() = default;
        Reaper(Reaper const&) = delete;
        Reaper& operator=(Reaper const&) = delete;
        ~Reaper() {
            hasEnded() = true;
            T* const instance = pointer();
            pointer() = nullptr;
            delete instance;
        }
        void arm() noexcept {}
    };

    static T*& pointer() noexcept {
        static constinit thread_local T* instance = nullptr;
        return instance;
    }

    static bool& hasEnded() noexcept {
        static constinit thread_local bool ended = false;
        return ended;
    }
};

#endif

} // namespace Zorvan::AttributeContainer
