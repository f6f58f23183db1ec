// For what must end the program rather than go on.
#pragma once

#include <csignal>

#include <sys/wait.h>
#include <unistd.h>

/// Runs `action` in a copy of this process. True when it ended by abort().
template <typename Action>
bool aborts(Action action)
{
    const pid_t child = fork();
    if (child == 0) {
        // Qt Test's own handler would print the copy's stack.
        std::signal(SIGABRT, SIG_DFL);
        action();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
}
