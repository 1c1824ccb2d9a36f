// SPDX-License-Identifier: MIT
#include "RunProgram.h"

#include <windows.h>

namespace kxmodel_test {

bool const hasPosixFiles = false;

namespace {

/// The argument as the C run-time library of the program takes it apart again: backslashes count double
/// before a quotation mark only.
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
    return result.append(numBackslashes, L'\\') + L'"';
}

/// A file that a child can have as one of its standard streams.
class InheritableFile {
public:
    InheritableFile(std::filesystem::path const& path, DWORD access, DWORD creation) {
        SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        // Who else has inherited a file of an earlier run may not have closed it yet.
        constexpr DWORD everything = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        handle_ = CreateFileW(path.c_str(), access, everything, &inheritable, creation, FILE_ATTRIBUTE_NORMAL,
                              nullptr);
    }
    ~InheritableFile() {
        if (handle_ != INVALID_HANDLE_VALUE)
            CloseHandle(handle_);
    }
    InheritableFile(InheritableFile const&) = delete;
    InheritableFile& operator=(InheritableFile const&) = delete;

    HANDLE handle() const { return handle_; }

private:
    HANDLE handle_;
};

} // namespace

void setVariable(std::string const& name, std::string const& value) {
    SetEnvironmentVariableW(pathOf(name).c_str(), pathOf(value).c_str());
}

int runProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments,
               Streams const& streams) {
    std::filesystem::path const path = std::filesystem::absolute(program).make_preferred();
    std::wstring commandLine = quoted(textOf(path));
    for (std::string const& argument : arguments)
        commandLine += L' ' + quoted(argument);

    InheritableFile const in(streams.in, GENERIC_READ, OPEN_EXISTING);
    InheritableFile const out(streams.out, GENERIC_WRITE, CREATE_ALWAYS);
    InheritableFile const err(streams.err, GENERIC_WRITE, CREATE_ALWAYS);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in.handle();
    startup.hStdOutput = out.handle();
    startup.hStdError = err.handle();
    PROCESS_INFORMATION process{};
    for (HANDLE const handle : {in.handle(), out.handle(), err.handle()})
        if (handle == INVALID_HANDLE_VALUE)
            return -1;
    if (!CreateProcessW(path.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                        &startup, &process))
        return -1;
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 0;
    bool const hasStatus = GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    // Exceptions end a program with statuses that no program uses by itself.
    return hasStatus && status < 128 ? static_cast<int>(status) : -1;
}

} // namespace kxmodel_test
