// SPDX-License-Identifier: MIT
#include "Process.h"
#include "System.h"

#include <windows.h>

#include <system_error>

namespace kxmodel {

// The standard streams of the other program are temporary files, so that neither side can wait for the other.

namespace {

/// The reason in the words of the C library; those of the system may be in any language and encoding.
std::string lastReason() {
    std::error_code const error(static_cast<int>(GetLastError()), std::system_category());
    return error.default_error_condition().message();
}

/// A file that goes when it is closed.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string const& program) : program_(program) {
        wchar_t folder[MAX_PATH + 1], path[MAX_PATH + 1];
        SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        if (GetTempPathW(MAX_PATH + 1, folder) != 0 && GetTempFileNameW(folder, L"kx", 0, path) != 0)
            handle_ = CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  &inherited, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (handle_ == INVALID_HANDLE_VALUE)
            throw ProcessError(program_, "has no temporary file: " + lastReason());
    }
    ~TemporaryFile() { CloseHandle(handle_); }
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    void put(std::string const& content) {
        DWORD written = 0;
        if (!WriteFile(handle_, content.data(), static_cast<DWORD>(content.size()), &written, nullptr))
            throw ProcessError(program_, "could not be given its input: " + lastReason());
        rewind();
    }
    std::string take() {
        rewind();
        std::string content;
        char buffer[1 << 14];
        for (DWORD count = 0; ReadFile(handle_, buffer, sizeof buffer, &count, nullptr) && count != 0;)
            content.append(buffer, count);
        return content;
    }
    HANDLE handle() const { return handle_; }

private:
    void rewind() { SetFilePointer(handle_, 0, nullptr, FILE_BEGIN); }

    std::string const& program_;
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

/// Quotes an argument so that the usual rules of taking a command line apart give it back.
std::wstring quoted(std::string const& argument) {
    std::filesystem::path const wide = pathOf(argument);
    std::wstring result = L"\"";
    std::size_t numBackslashes = 0;
    for (wchar_t const c : wide.native()) {
        if (c == L'"')
            result.append(numBackslashes + 1, L'\\');
        numBackslashes = c == L'\\' ? numBackslashes + 1 : 0;
        result += c;
    }
    return result.append(numBackslashes, L'\\') + L"\"";
}

int runWith(std::string const& program, std::vector<std::string> const& arguments, TemporaryFile const& in,
            TemporaryFile const& out, TemporaryFile const& err) {
    std::wstring commandLine = quoted(program);
    for (std::string const& argument : arguments)
        commandLine += L" " + quoted(argument);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in.handle();
    startup.hStdOutput = out.handle();
    startup.hStdError = err.handle();
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                        nullptr, &startup, &process))
        throw ProcessError(program, "could not be started: " + lastReason());
    DWORD status = 1;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return static_cast<int>(status);
}

} // namespace

ProgramEnd runToEnd(std::string const& program, std::vector<std::string> const& arguments,
                    std::string const& input) {
    TemporaryFile in(program), out(program), err(program);
    in.put(input);
    int const status = runWith(program, arguments, in, out, err);
    return {status, out.take(), err.take()};
}

} // namespace kxmodel
