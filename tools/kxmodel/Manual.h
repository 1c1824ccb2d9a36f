// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace kxmodel {

/// What the help of the command line says, in a form that is installed: "man" is a manual page, "bash",
/// "fish" and "zsh" complete calls in these shells. Nothing for another form.
std::optional<std::string> manualText(CLI::App const& app, std::string_view form);

} // namespace kxmodel
