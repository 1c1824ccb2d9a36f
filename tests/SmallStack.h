// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <pthread.h>

/// Runs a function in a thread with a stack of 1 MiB, more where a sanitizer enlarges the frames.
inline void runOnSmallStack(std::function<void()> run) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, std::size_t{KX_SMALL_STACK_MIB} << 20);
    pthread_t thread;
    auto const entry = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, entry, &run), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}
