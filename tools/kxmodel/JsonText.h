// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace kxmodel {

/// Appends a text as a string of JSON, in quotes. A byte that is no part of valid UTF-8 becomes "\uFFxx", a
/// backslash included, which is how documents write bytes of 0x80 and above; so the result is valid UTF-8
/// whatever the text holds.
void appendJsonString(std::string& out, std::string_view text);

} // namespace kxmodel
