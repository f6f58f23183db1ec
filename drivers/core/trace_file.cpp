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
    if (m_descriptor < 0 || ::fstat(m_descriptor, &status) != 0)
        reason = reasonOf(errno);
    else if (!S_ISREG(status.st_mode))
        reason = "is no regular file";
    else if ((status.st_mode & 0777) != 0600 && ::fchmod(m_descriptor, 0600) != 0)
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
    ssize_t written = 0;
    do {
        written = ::write(m_descriptor, line.data(), line.size());
    } while (written < 0 && errno == EINTR);
    if (written < 0)
        complain(reasonOf(errno).c_str());
    else if (static_cast<std::size_t>(written) < line.size())
        complain("a line was cut off");
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
