// SPDX-License-Identifier: MIT
#pragma once

#include "platform/ThreadSlot.h"

#include <memory>

namespace Zorvan::AttributeContainer {

/// One default-constructed `T` for each thread that asks for it. Handlers and destructors of applications run
/// while a thread or the program ends, before or after the per-thread objects of this library, and still need
/// the state: what a thread asks for after its instance was destroyed is made anew and may never be freed.
template <class T>
class PerThread {
public:
    PerThread() = delete;

    /// The instance of this thread, made on first use.
    [[nodiscard]] static T& get() {
        T* const instance = ThreadSlot<T>::get();
        return instance ? *instance : make();
    }

    /// The instance of this thread, null when it has none. Never allocates.
    [[nodiscard]] static T* peek() noexcept { return ThreadSlot<T>::get(); }

private:
    static T& make() {
        auto instance = std::make_unique<T>();
        ThreadSlot<T>::set(instance.get());
        return *instance.release();
    }
};

} // namespace Zorvan::AttributeContainer
