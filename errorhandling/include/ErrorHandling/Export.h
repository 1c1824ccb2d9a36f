// SPDX-License-Identifier: MIT
#pragma once

/// KX_ERRORHANDLING_API marks what the shared library KX.ErrorHandling offers. KX_ERRORHANDLING_EXPORTS is
/// defined while that library is built, KX_ERRORHANDLING_STATIC by everybody when it is a static one.
#if defined(KX_ERRORHANDLING_STATIC)
#define KX_ERRORHANDLING_API
#elif defined(_WIN32)
#if defined(KX_ERRORHANDLING_EXPORTS)
#define KX_ERRORHANDLING_API __declspec(dllexport)
#else
#define KX_ERRORHANDLING_API __declspec(dllimport)
#endif
#else
#define KX_ERRORHANDLING_API __attribute__((visibility("default")))
#endif
