// A program that a test runs, and whose standard output it reads as records.
#pragma once

#include <csignal>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace endurance {

/// Killed at the latest when this ends.
class Child {
public:
    /// `command`: the program's path and its arguments. Ends the test program if it cannot be run.
    explicit Child(std::vector<std::string> command)
    {
        int ends[2] = {-1, -1};
        posix_spawn_file_actions_t actions;
        std::vector<char *> arguments;
        arguments.reserve(command.size() + 1);
        for (std::string &word : command)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        if (::pipe2(ends, O_CLOEXEC) != 0)
            std::abort();
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        if (::posix_spawn(&m_pid, arguments.front(), &actions, nullptr, arguments.data(), environ) != 0)
            std::abort();
        posix_spawn_file_actions_destroy(&actions);
        ::close(ends[1]);
        m_output = ends[0];
    }
    ~Child()
    {
        kill();
        ::close(m_output);
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    /// Waits for a whole record. False at the end of the output.
    template <class Record>
    bool read(Record &record) const
    {
        return ::read(m_output, &record, sizeof record) == static_cast<ssize_t>(sizeof record);
    }

    /// Kills the program, waits for its end and returns its status, as waitpid() has it.
    int kill()
    {
        if (m_pid > 0)
            ::kill(m_pid, SIGKILL);
        return wait();
    }

    /// Waits for the program's end and returns its status.
    int wait()
    {
        if (const pid_t pid = std::exchange(m_pid, -1); pid > 0)
            ::waitpid(pid, &m_status, 0);
        return m_status;
    }

private:
    pid_t m_pid = -1;
    int m_output = -1;
    int m_status = 0;
};

} // namespace endurance
