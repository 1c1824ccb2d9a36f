// SPDX-License-Identifier: MIT
#include "Process.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace kxmodel {

// The standard streams of the other program are temporary files, so that neither side can wait for the other.

namespace {

[[noreturn]] void fail(std::string const& program, std::string const& reason) {
    throw ProcessError("\"" + program + "\" " + reason);
}

#ifdef _WIN32

std::string lastReason() { return std::system_category().message(static_cast<int>(GetLastError())); }

std::wstring wide(std::string const& text) {
    int const size = static_cast<int>(text.size());
    std::wstring result(text.size(), L'\0');
    result.resize(MultiByteToWideChar(CP_ACP, 0, text.data(), size, result.data(), size));
    return result;
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
            fail(program_, "has no temporary file: " + lastReason());
    }
    ~TemporaryFile() { CloseHandle(handle_); }
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    void put(std::string const& content) {
        DWORD written = 0;
        if (!WriteFile(handle_, content.data(), static_cast<DWORD>(content.size()), &written, nullptr))
            fail(program_, "could not be given its input: " + lastReason());
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
std::wstring quoted(std::wstring const& argument) {
    std::wstring result = L"\"";
    std::size_t numBackslashes = 0;
    for (wchar_t const c : argument) {
        if (c == L'"')
            result.append(numBackslashes + 1, L'\\');
        numBackslashes = c == L'\\' ? numBackslashes + 1 : 0;
        result += c;
    }
    return result.append(numBackslashes, L'\\') + L"\"";
}

int runWith(std::string const& program, std::vector<std::string> const& arguments, TemporaryFile const& in,
            TemporaryFile const& out, TemporaryFile const& err) {
    std::wstring commandLine = quoted(wide(program));
    for (std::string const& argument : arguments)
        commandLine += L" " + quoted(wide(argument));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in.handle();
    startup.hStdOutput = out.handle();
    startup.hStdError = err.handle();
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                        nullptr, &startup, &process))
        fail(program, "could not be started: " + lastReason());
    DWORD status = 1;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return static_cast<int>(status);
}

#else

std::string reasonOf(int error) { return std::generic_category().message(error); }

/// A file without a name.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string const& program) : program_(program), file_(std::tmpfile()) {
        if (!file_)
            fail(program_, "has no temporary file: " + reasonOf(errno));
    }
    ~TemporaryFile() { std::fclose(file_); }
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    void put(std::string const& content) {
        errno = 0;
        if (std::fwrite(content.data(), 1, content.size(), file_) != content.size() ||
            std::fflush(file_) != 0)
            fail(program_, "could not be given its input: " + reasonOf(errno));
        std::rewind(file_);
    }
    std::string take() {
        std::rewind(file_);
        std::string content;
        char buffer[1 << 14];
        while (std::size_t const count = std::fread(buffer, 1, sizeof buffer, file_))
            content.append(buffer, count);
        return content;
    }
    int descriptor() const { return fileno(file_); }

private:
    std::string const& program_;
    std::FILE* file_;
};

int runWith(std::string const& program, std::vector<std::string> const& arguments, TemporaryFile const& in,
            TemporaryFile const& out, TemporaryFile const& err) {
    std::vector<char*> words{const_cast<char*>(program.c_str())};
    for (std::string const& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.descriptor(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out.descriptor(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, err.descriptor(), STDERR_FILENO);
    pid_t process = 0;
    int const error = posix_spawnp(&process, words[0], &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        fail(program, "could not be started: " + reasonOf(error));
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR)
            fail(program, "was lost: " + reasonOf(errno));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

#endif

} // namespace

std::string runProgram(std::string const& program, std::vector<std::string> const& arguments,
                       std::string const& input) {
    TemporaryFile in(program), out(program), err(program);
    in.put(input);
    int const status = runWith(program, arguments, in, out, err);
    if (status != 0) {
        std::string const said = err.take();
        fail(program, "ended with status " + std::to_string(status) + ": " + said.substr(0, said.find('\n')));
    }
    return out.take();
}

} // namespace kxmodel
