// SPDX-License-Identifier: MIT
#include "System.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <memory>

namespace fs = std::filesystem;

namespace kxmodel {

namespace {

std::string toUtf8(wchar_t const* text) {
    // The terminating null is counted.
    int const size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string result(size > 0 ? static_cast<std::size_t>(size) : 1, '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, result.data(), size, nullptr, nullptr);
    result.pop_back();
    return result;
}

} // namespace

StandardStreams::StandardStreams() noexcept : consoleCodePage_(GetConsoleOutputCP()) {
    for (std::FILE* const stream : {stdin, stdout, stderr})
        _setmode(_fileno(stream), _O_BINARY);
    SetConsoleOutputCP(CP_UTF8);
}

StandardStreams::~StandardStreams() {
    std::fflush(nullptr);
    if (consoleCodePage_ != 0)
        SetConsoleOutputCP(consoleCodePage_);
}

std::vector<std::string> argumentsOf(int, char**) {
    // What main() gets was squeezed through the code page of the system.
    int count = 0;
    std::unique_ptr<LPWSTR, decltype(&LocalFree)> const arguments(
        CommandLineToArgvW(GetCommandLineW(), &count), LocalFree);
    std::vector<std::string> result;
    for (int i = 1; i < count; ++i)
        result.push_back(toUtf8(arguments.get()[i]));
    return result;
}

fs::path pathOf(std::string const& text) { return std::u8string(text.begin(), text.end()); }

std::FILE* openFile(fs::path const& path, char const* mode) noexcept {
    wchar_t wideMode[8] = {};
    for (std::size_t i = 0; i + 1 < std::size(wideMode) && mode[i] != '\0'; ++i)
        wideMode[i] = static_cast<unsigned char>(mode[i]);
    return _wfopen(path.c_str(), wideMode);
}

bool isErrorTerminal() noexcept { return _isatty(_fileno(stderr)) != 0; }

} // namespace kxmodel
