// SPDX-License-Identifier: MIT
#include "platform/FilePaths.h"

#include <windows.h>

#include <string>

namespace Zorvan::AttributeContainer {

namespace fs = std::filesystem;

fs::path followLinks(fs::path const& path, std::error_code&) {
    DWORD const attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return path;
    HANDLE const file = CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return path;
    std::wstring result(32768, L'\0');
    DWORD const size = GetFinalPathNameByHandleW(file, result.data(), static_cast<DWORD>(result.size()), 0);
    CloseHandle(file);
    if (size == 0 || size >= result.size())
        return path;
    result.resize(size);
    return result;
}

} // namespace Zorvan::AttributeContainer
