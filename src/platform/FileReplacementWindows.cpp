// SPDX-License-Identifier: MIT
#include "platform/FilePaths.h"

#include <AttributeContainer/FileReplacement.h>

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <system_error>
#include <thread>

namespace Zorvan::AttributeContainer {

namespace {

struct CloseHandleOf {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
using File = std::unique_ptr<void, CloseHandleOf>;

/// The reason in the C library's words; those of the system may be in any language and encoding.
std::string failure(std::string const& action, DWORD reason = GetLastError()) {
    return action + ": " +
           std::error_code(static_cast<int>(reason), std::system_category())
               .default_error_condition()
               .message();
}

/// Without a file when that fails; see GetLastError().
File open(std::filesystem::path const& path, DWORD access, DWORD sharing, DWORD disposition) {
    HANDLE const handle =
        CreateFileW(path.c_str(), access, sharing, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    return File(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

/// Makes a file that nobody else can open; whoever has it open is waited for.
File makeLocked(std::filesystem::path const& path) {
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::seconds patience(10);
    constexpr std::chrono::milliseconds pause(2);
    for (auto const end = Clock::now() + patience;; std::this_thread::sleep_for(pause)) {
        File file = open(path, GENERIC_WRITE | DELETE, 0, CREATE_ALWAYS);
        if (file || GetLastError() != ERROR_SHARING_VIOLATION || Clock::now() >= end)
            return file;
    }
}

bool writeAll(HANDLE file, std::string_view content) {
    while (!content.empty()) {
        DWORD const block = static_cast<DWORD>(std::min<std::size_t>(content.size(), std::size_t{1} << 24));
        DWORD written = 0;
        if (!WriteFile(file, content.data(), block, &written, nullptr))
            return false;
        content.remove_prefix(written);
    }
    return true;
}

/// Moves an open file to a place where another one may be.
bool moveTo(HANDLE file, std::filesystem::path const& path) {
    std::wstring const& name = path.native();
    std::size_t const size = sizeof(FILE_RENAME_INFO) + name.size() * sizeof(wchar_t);
    std::string memory(size, '\0');
    auto* const info = ::new (memory.data()) FILE_RENAME_INFO{};
    info->ReplaceIfExists = TRUE;
    info->FileNameLength = static_cast<DWORD>(name.size() * sizeof(wchar_t));
    std::memcpy(info->FileName, name.c_str(), info->FileNameLength + sizeof(wchar_t));
    return SetFileInformationByHandle(file, FileRenameInfo, info, static_cast<DWORD>(size)) != 0;
}

} // namespace

std::optional<std::string> replaceFile(std::string const& path, std::string_view content) {
    std::error_code error;
    auto const named = followLinks(std::u8string(path.begin(), path.end()), error);
    constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    if (!open(named, GENERIC_WRITE, shareAll, OPEN_EXISTING) && GetLastError() != ERROR_FILE_NOT_FOUND &&
        GetLastError() != ERROR_PATH_NOT_FOUND)
        return failure("cannot write the file");
    auto const target = std::filesystem::absolute(named, error);
    auto const beside = savingPath(target);
    File const file = makeLocked(beside);
    if (!file) {
        auto const name = beside.u8string();
        return failure("cannot make the file \"" + std::string(name.begin(), name.end()) + "\"");
    }
    if (!writeAll(file.get(), content) || !FlushFileBuffers(file.get()) || !moveTo(file.get(), target)) {
        auto const reason = GetLastError();
        FILE_DISPOSITION_INFO removal{TRUE};
        SetFileInformationByHandle(file.get(), FileDispositionInfo, &removal, sizeof removal);
        return failure("cannot write the file", reason);
    }
    return std::nullopt;
}

} // namespace Zorvan::AttributeContainer
