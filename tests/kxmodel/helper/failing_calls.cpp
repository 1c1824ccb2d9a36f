// SPDX-License-Identifier: MIT
// Loaded in front of the C library, this makes calls of the system fail, or the process end, as the
// environment says:
//   KX_FAIL_CALL   the number of the call, from 1 on, or the name of those that fail each time
//   KX_FAIL_HOW    the number of the error; "dead" and a number: this call and all behind it fail; "kill":
//   the
//                  process is killed; of a write "short": half is written; "torn": half, and it is killed
//   KX_FAIL_LOG    the file to which the name of the first call that failed is written
//   KX_KILL_AFTER  microseconds after which the process is killed, wherever it is
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string_view>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

std::string_view variable(char const* name) {
    char const* const value = std::getenv(name);
    return value ? value : "";
}

bool isFailing(std::string_view name) {
    static int calls = 0;
    static bool hasFailed = false;
    std::string_view const which = variable("KX_FAIL_CALL");
    bool const isDead = variable("KX_FAIL_HOW").starts_with("dead") && hasFailed;
    if (which.empty() || !(isDead || which == name || ++calls == std::atoi(which.data())))
        return false;
    if (!hasFailed) {
        auto const log =
            ::syscall(SYS_openat, AT_FDCWD, variable("KX_FAIL_LOG").data(), O_WRONLY | O_CREAT, 0600);
        ::syscall(SYS_write, log, name.data(), name.size());
        ::syscall(SYS_close, log);
    }
    hasFailed = true;
    return true;
}

/// What a failing call gives back, unless it ends the process.
int fail() {
    std::string_view how = variable("KX_FAIL_HOW");
    if (how == "kill" || how == "torn")
        ::raise(SIGKILL);
    how.remove_prefix(how.starts_with("dead ") ? 5 : 0);
    errno = std::atoi(how.data());
    return -1;
}

template <class Function>
Function* behind(Function*, char const* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

struct Timer {
    Timer() {
        long const life = std::atol(variable("KX_KILL_AFTER").data());
        if (life == 0)
            return;
        sigevent event{};
        event.sigev_notify = SIGEV_SIGNAL;
        event.sigev_signo = SIGKILL;
        timer_t timer{};
        itimerspec const when{{0, 0}, {life / 1000000, life % 1000000 * 1000}};
        if (::timer_create(CLOCK_MONOTONIC, &event, &timer) != 0 ||
            ::timer_settime(timer, 0, &when, nullptr) != 0)
            std::abort();
    }
} const timer;

} // namespace

#define FAILING(RESULT, NAME, PARAMETERS, ARGUMENTS)                                                         \
    extern "C" RESULT NAME PARAMETERS { return isFailing(#NAME) ? fail() : behind(&NAME, #NAME) ARGUMENTS; }

FAILING(int, flock, (int file, int operation), (file, operation))
FAILING(int, fchown, (int file, uid_t owner, gid_t group), (file, owner, group))
FAILING(int, fchmod, (int file, mode_t mode), (file, mode))
FAILING(int, fsync, (int file), (file))
FAILING(int, close, (int file), (file))
FAILING(ssize_t, read, (int file, void* data, std::size_t size), (file, data, size))
FAILING(int, rename, (char const* from, char const* to), (from, to))
FAILING(int, unlink, (char const* path), (path))

extern "C" int open(char const* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return isFailing("open") ? fail() : behind(&open, "open")(path, flags, mode);
}

extern "C" ssize_t write(int file, void const* data, std::size_t size) {
    if (!isFailing("write"))
        return behind(&write, "write")(file, data, size);
    std::string_view const how = variable("KX_FAIL_HOW");
    if (how != "short" && how != "torn")
        return fail();
    ssize_t const written = behind(&write, "write")(file, data, size == 1 ? 1 : size / 2);
    return how == "torn" ? fail() : written;
}
