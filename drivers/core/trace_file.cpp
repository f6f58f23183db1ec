#include "drivers/core/trace_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace drivers {

namespace {

std::string reasonOf(int error)
{
    return std::generic_category().message(error);
}

} // namespace

TraceFile::TraceFile(const std::string &name) : m_name(name)
{
    if (name.empty())
        return;
    // Not blocking, since a pipe nobody reads would hold up the program.
    constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    m_descriptor = ::open(name.c_str(), kFlags, 0600); // NOLINT(*-vararg)
    struct stat status = {};
    std::string reason;
    const bool opened = m_descriptor >= 0 && ::fstat(m_descriptor, &status) == 0;
    if (opened && !S_ISREG(status.st_mode))
        reason = "is no regular file";
    else if (opened && status.st_uid != ::geteuid()) // its owner could read it, whatever its mode
        reason = "belongs to another user";
    else if (!opened || ((status.st_mode & 0777) != 0600 && ::fchmod(m_descriptor, 0600) != 0))
        reason = reasonOf(errno);
    if (reason.empty())
        return;
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
    complain(reason.c_str());
}

TraceFile::~TraceFile()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void TraceFile::append(const std::string &line)
{
    // A line that a full disk cut off must not take the next one with it.
    const bool afterCut = m_cutOff.exchange(false);
    const std::string text = afterCut ? '\n' + line : line;
    ssize_t written = 0;
    do {
        written = ::write(m_descriptor, text.data(), text.size());
    } while (written < 0 && errno == EINTR);
    if (written == static_cast<ssize_t>(text.size()))
        return;
    if (written > 0 || afterCut)
        m_cutOff = true;
    complain(written < 0 ? reasonOf(errno).c_str() : "a line was cut off");
}

void TraceFile::complain(const char *reason)
{
    if (m_complained.exchange(true))
        return;
    const std::string text = "unifold trace: " + m_name + ": " + reason + '\n';
    // Nothing can be done about a standard error that is closed.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
}

} // namespace drivers
