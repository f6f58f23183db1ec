#include "app/standard_streams.h"

#include <QTest>

#include <initializer_list>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

bool isNullDevice(int descriptor)
{
    struct stat its = {};
    struct stat device = {};
    return fstat(descriptor, &its) == 0 && stat("/dev/null", &device) == 0 && its.st_rdev == device.st_rdev;
}

/// In a copy of this process whose standard streams are pipes' ends, those of `closed` closed: true when after the
/// call these and no others are /dev/null, open, and the next file gets a number behind the streams.
bool onlyTheseBecomeNull(std::initializer_list<int> closed)
{
    const pid_t child = fork();
    if (child == 0) {
        int ends[2] = {-1, -1};
        bool asExpected = pipe(ends) == 0;
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            dup2(ends[1], stream);
        for (const int stream : closed)
            close(stream);
        keepStandardStreams();
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            bool wasClosed = false;
            for (const int other : closed)
                wasClosed = wasClosed || other == stream;
            asExpected = asExpected && fcntl(stream, F_GETFD) != -1 && isNullDevice(stream) == wasClosed;
        }
        _exit(asExpected && open("/dev/zero", O_RDONLY) > STDERR_FILENO ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

class TestStandardStreams : public QObject {
    Q_OBJECT

private slots:
    void openStreamsAreLeftAlone() { QVERIFY(onlyTheseBecomeNull({})); }

    void aClosedStreamBecomesTheNullDevice()
    {
        QVERIFY(onlyTheseBecomeNull({STDIN_FILENO}));
        QVERIFY(onlyTheseBecomeNull({STDOUT_FILENO}));
        QVERIFY(onlyTheseBecomeNull({STDERR_FILENO}));
    }

    void soDoSeveral()
    {
        QVERIFY(onlyTheseBecomeNull({STDOUT_FILENO, STDERR_FILENO}));
        QVERIFY(onlyTheseBecomeNull({STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}));
    }
};

QTEST_APPLESS_MAIN(TestStandardStreams)
#include "test_standard_streams.moc"
