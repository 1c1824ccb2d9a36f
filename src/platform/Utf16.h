// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace Zorvan::AttributeContainer {

/// The 16-bit character of the system's interfaces; elsewhere wchar_t has another width.
#if defined(_WIN32)
using Utf16Unit = wchar_t;
#else
using Utf16Unit = char16_t;
#endif
using Utf16String = std::basic_string<Utf16Unit>;
using Utf16View = std::basic_string_view<Utf16Unit>;

/// Converts from UTF-8. Each longest part of a sequence that does not make a character becomes U+FFFD.
[[nodiscard]] Utf16String toUtf16(std::string_view text);
/// Converts to UTF-8. A surrogate without its partner becomes U+FFFD.
[[nodiscard]] std::string toUtf8(Utf16View text);

} // namespace Zorvan::AttributeContainer
