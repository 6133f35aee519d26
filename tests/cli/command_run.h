#pragma once

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

extern char **environ;

struct CommandResult {
    int status = -1;  ///< the exit status, or minus the signal's number
    std::string out;
    std::string err;
};

/// Runs a program with its output in pipes and waits for it.
inline CommandResult RunCommand(const std::string &program, const std::vector<std::string> &arguments) {
    std::vector<char *> argv = {const_cast<char *>(program.c_str())};
    for (const std::string &argument : arguments) argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);

    int outPipe[2];
    int errPipe[2];
    if (pipe2(outPipe, O_CLOEXEC) != 0 || pipe2(errPipe, O_CLOEXEC) != 0) std::abort();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errPipe[1], STDERR_FILENO);
    pid_t child = 0;
    if (posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ) != 0) std::abort();
    posix_spawn_file_actions_destroy(&actions);
    close(outPipe[1]);
    close(errPipe[1]);

    CommandResult result;
    pollfd streams[] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    std::string *const texts[] = {&result.out, &result.err};
    for (int open = 2; open > 0;) {
        poll(streams, 2, -1);
        for (int i = 0; i < 2; ++i) {
            if (streams[i].fd < 0 || streams[i].revents == 0) continue;
            char bytes[4096];
            const ssize_t count = read(streams[i].fd, bytes, sizeof bytes);
            if (count > 0) {
                texts[i]->append(bytes, static_cast<std::size_t>(count));
                continue;
            }
            close(streams[i].fd);
            streams[i].fd = -1;
            --open;
        }
    }
    int status = 0;
    waitpid(child, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return result;
}
