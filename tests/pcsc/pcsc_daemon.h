// The PC/SC daemon that a test runs against.
#pragma once

#include <QProcess>
#include <QString>

#include <memory>

namespace testsupport {

/// The virtual reader's two slots.
constexpr char kReader0[] = "Virtual PCD 00 00";
constexpr char kReader1[] = "Virtual PCD 00 01";

/// The first slot of the other virtual reader that a test may ask for.
constexpr char kOtherReader[] = "Other PCD 00 00";

/// While it lives, a pcscd with the virtual reader runs. One that ran before is used and left alone; else one is
/// started and ended again, at the latest by the kernel when the test dies. The daemon's socket and the virtual
/// reader's ports exist once per machine, so a lock keeps other tests waiting, those of another build too.
class PcscDaemon {
public:
    PcscDaemon();
    ~PcscDaemon();
    PcscDaemon(const PcscDaemon &) = delete;
    PcscDaemon &operator=(const PcscDaemon &) = delete;

    /// Empty if all is well, else what is missing.
    QString problem() const { return m_problem; }

    /// Whether this object started the daemon and so may stop it.
    bool isOurs() const { return m_process != nullptr; }

    /// Stops and starts our own daemon. start() returns false with a problem() if it does not come up.
    void stop();
    bool start();

    /// Starts our own daemon with another virtual reader in the place of the usual one, as if that had been unplugged.
    bool startWithOtherReader();

private:
    bool launch(const QStringList &options, const char *reader);
    bool waitForReader(const char *reader, int timeoutMs);

    int m_lock;
    std::unique_ptr<QProcess> m_process;
    QString m_problem;
};

} // namespace testsupport
