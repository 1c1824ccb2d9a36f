// SPDX-License-Identifier: MIT
#pragma once

namespace Zorvan::AttributeContainer {

/// One default-constructed `T` for each thread that asks for it. Handlers and destructors of applications run
/// while a thread or the program ends, before or after the per-thread objects of this library, and still need
/// the state: what a thread asks for after its instance was destroyed is made anew and intentionally never
/// freed.
template <class T>
class PerThread {
public:
    PerThread() = delete;

    /// The instance of this thread, made on first use.
    [[nodiscard]] static T& get() {
        T*& instance = slot();
        if (!instance)
            instance = make();
        return *instance;
    }

    /// The instance of this thread, null when it has none. Never allocates.
    [[nodiscard]] static T* peek() noexcept { return slot(); }

private:
    struct Reaper {
        Reaper() = default;
        Reaper(Reaper const&) = delete;
        Reaper& operator=(Reaper const&) = delete;
        ~Reaper() {
            // The destructor of T may ask for the state again, so the old instance is out of reach before it
            // runs.
            hasEnded() = true;
            T* const instance = slot();
            slot() = nullptr;
            delete instance;
        }
        void arm() noexcept {}
    };

    static T* make() {
        if (!hasEnded()) {
            static thread_local Reaper reaper;
            reaper.arm();
        }
        return new T();
    }

    static T*& slot() noexcept {
        static constinit thread_local T* instance = nullptr;
        return instance;
    }

    static bool& hasEnded() noexcept {
        static constinit thread_local bool ended = false;
        return ended;
    }
};

} // namespace Zorvan::AttributeContainer
