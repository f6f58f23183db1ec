// The file that a trace is appended to.
#pragma once

#include <atomic>
#include <string>

namespace drivers {

/// Thread-safe. A file that cannot be written is told once on standard error.
class TraceFile {
public:
    /// Opens the file (mode 0600) or makes it. An empty name is no file.
    explicit TraceFile(const std::string &name);
    ~TraceFile();
    TraceFile(const TraceFile &) = delete;
    TraceFile &operator=(const TraceFile &) = delete;

    bool isOpen() const { return m_descriptor >= 0; }

    /// Appends the text, a line with its end, by one write(2).
    void append(const std::string &line);

private:
    void complain(const char *reason);

    std::string m_name;
    int m_descriptor = -1;
    std::atomic<bool> m_complained = false;
    std::atomic<bool> m_cutOff = false; ///< the last line lacks its end
};

} // namespace drivers
