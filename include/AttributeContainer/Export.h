// SPDX-License-Identifier: MIT
#pragma once

/// KX_ATTRIBUTECONTAINER_API marks what the shared library KX.AttributeContainer offers.
/// KX_ATTRIBUTECONTAINER_EXPORTS is defined while that library is built, KX_ATTRIBUTECONTAINER_STATIC by
/// everybody when it is a static one.
#if defined(KX_ATTRIBUTECONTAINER_STATIC)
#define KX_ATTRIBUTECONTAINER_API
#elif defined(_WIN32)
#if defined(KX_ATTRIBUTECONTAINER_EXPORTS)
#define KX_ATTRIBUTECONTAINER_API __declspec(dllexport)
#else
#define KX_ATTRIBUTECONTAINER_API __declspec(dllimport)
#endif
#else
#define KX_ATTRIBUTECONTAINER_API __attribute__((visibility("default")))
#endif
