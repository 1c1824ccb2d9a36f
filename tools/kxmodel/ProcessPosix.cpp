// SPDX-License-Identifier: MIT
#include "Process.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace kxmodel {

// The standard streams of the other program are temporary files, so that neither side can wait for the other.

namespace {

std::string reasonOf(int error) { return std::generic_category().message(error); }

/// A file without a name.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string const& program) : program_(program), file_(std::tmpfile()) {
        if (!file_)
            throw ProcessError(program_, "has no temporary file: " + reasonOf(errno));
    }
    ~TemporaryFile() { static_cast<void>(std::fclose(file_)); }
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    void put(std::string const& content) {
        errno = 0;
        if (std::fwrite(content.data(), 1, content.size(), file_) != content.size() ||
            std::fflush(file_) != 0)
            throw ProcessError(program_, "could not be given its input: " + reasonOf(errno));
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
        throw ProcessError(program, "could not be started: " + reasonOf(error));
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR)
            throw ProcessError(program, "was lost: " + reasonOf(errno));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

ProgramEnd runToEnd(std::string const& program, std::vector<std::string> const& arguments,
                    std::string const& input) {
    TemporaryFile in(program), out(program), err(program);
    in.put(input);
    ProgramEnd end{runWith(program, arguments, in, out, err), out.take(), err.take()};
    // Where a process is not started in one step (in valgrind, for one), only the child learns that it cannot
    // be, and ends with this status. A program that has something to say did start.
    if (end.status == 127 && end.err.empty())
        throw ProcessError(program, "could not be started: the system does not say why");
    return end;
}

} // namespace kxmodel
