// SPDX-License-Identifier: MIT
#include "RunProgram.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace kxmodel_test {

bool const hasPosixFiles = true;

void setVariable(std::string const& name, std::string const& value) {
    ::setenv(name.c_str(), value.c_str(), 1);
}

int runProgram(std::filesystem::path const& program, std::vector<std::string> const& arguments,
               Streams const& streams) {
    std::string name = program.string();
    std::vector<std::string> copies = arguments;
    std::vector<char*> argv{name.data()};
    for (std::string& argument : copies)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    constexpr int toWrite = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, streams.in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, streams.out.c_str(), toWrite, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, streams.err.c_str(), toWrite, 0600);
    pid_t child = 0;
    int const error = posix_spawn(&child, name.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);

    int status = 0;
    if (error != 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

} // namespace kxmodel_test
