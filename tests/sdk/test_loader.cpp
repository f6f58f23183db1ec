#include "sdk/entry_points.h"
#include "sdk/loader.h"
#include "tests/support/death.h"

#include <QTest>

#include <cstdio>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// Standard output as a pipe for as long as this lives; what was written so far is read without any flush.
class Console {
public:
    Console()
    {
        std::fflush(stdout);
        if (pipe2(m_pipe, O_NONBLOCK) != 0)
            qFatal("no pipe");
        // 85 lines are more than a page, and nobody reads while the loader writes.
        fcntl(m_pipe[1], F_SETPIPE_SZ, 1 << 18);
        m_stdout = dup(STDOUT_FILENO);
        dup2(m_pipe[1], STDOUT_FILENO);
    }
    Console(const Console &) = delete;
    Console &operator=(const Console &) = delete;
    ~Console()
    {
        dup2(m_stdout, STDOUT_FILENO);
        close(m_stdout);
        close(m_pipe[0]);
        close(m_pipe[1]);
    }

    QByteArray written()
    {
        QByteArray bytes;
        char buffer[4096];
        for (ssize_t count = 0; (count = read(m_pipe[0], buffer, sizeof buffer)) > 0;)
            bytes.append(buffer, static_cast<int>(count));
        return bytes;
    }

private:
    int m_pipe[2] = {-1, -1};
    int m_stdout = -1;
};

struct Load {
    std::uint32_t code;
    QByteArray console;
};

Load load(const char *name)
{
    Console console;
    sdk::setLibraryName(name);
    const std::uint32_t code = sdk::load();
    return {code, console.written()};
}

const char *const kNames[] = {
#define UNIFOLD_NAME_CALLED(name, Contract) #name,
#define UNIFOLD_NAME_UNCALLED(name) #name,
    UNIFOLD_ENTRY_POINTS(UNIFOLD_NAME_CALLED, UNIFOLD_NAME_UNCALLED)};

/// The lines of a pass over the table in which only the names of `present` are found.
QByteArray symbolLines(const QList<QByteArray> &present)
{
    QByteArray lines = "Load symbols......\r\n";
    for (const char *name : kNames) {
        lines += "Load symbol " + QByteArray(name);
        lines += present.contains(name) ? " success.\r\n" : " failed!--------------------------\r\n";
    }
    return lines + "Load symbols done.\r\n";
}

const QList<QByteArray> kPartial{"vek_open", "vek_close", "inerrupt"};

} // namespace

class TestLoader : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { sdk::unload(); }

    void aMissingFileFailsAndStaysUnloaded()
    {
        const Load missing = load("tarvovek.dll");
        QCOMPARE(missing.code, 0xFFFFFFFFU);
        QCOMPARE(missing.console, QByteArray("Load library tarvovek.dll failed!\r\n"));
        QCOMPARE(plib_handle, std::intptr_t{0});
        QCOMPARE(sdk::isInitialized(), 0);
    }

    void eachEntryIsReportedInTableOrder()
    {
        const Load partial = load("libtarvovek.so");
        QCOMPARE(partial.code, 0U);
        QCOMPARE(partial.console, "Load library libtarvovek.so success!\r\n" + symbolLines(kPartial));
        QCOMPARE(initialized, 1);
        QVERIFY(plib_handle != 0);
        QVERIFY(vek_open != nullptr);
        QVERIFY(inerrupt != nullptr);
        QVERIFY(vek_enumerate == nullptr);
    }

    void aLibraryWithNoneOfTheNamesCountsAsLoaded()
    {
        const Load nameless = load("libtarvozent.so");
        QCOMPARE(nameless.code, 0U);
        QCOMPARE(nameless.console, "Load library libtarvozent.so success!\r\n" + symbolLines({}));
        QCOMPARE(nameless.console.count("failed!"), 85);
        QCOMPARE(sdk::isInitialized(), 1);
    }

    void loadingWhileOpenResolvesAgainFromTheOpenLibrary()
    {
        load("libtarvovek.so");
        const std::intptr_t handle = plib_handle;
        vek_open = nullptr;
        const Load again = load("libtarvozent.so");
        QCOMPARE(again.code, 0U);
        QCOMPARE(again.console, symbolLines(kPartial));
        QCOMPARE(plib_handle, handle);
        QVERIFY(vek_open != nullptr);
    }

    void openLibraryReportsOnlyAnOpeningOfItsOwn()
    {
        Console console;
        QCOMPARE(sdk::openLibrary("libtarvovek.so"), 1);
        QCOMPARE(sdk::openLibrary("libtarvozent.so"), 0);
        QCOMPARE(console.written(), QByteArray("Load library libtarvovek.so success!\r\n"));
        sdk::unload();
        QCOMPARE(sdk::openLibrary("no such file"), 0);
        QCOMPARE(console.written(), QByteArray("Load library no such file failed!\r\n"));
    }

    void unloadKeepsThePointersAndTheNextLoadResolvesAll()
    {
        load("libtarvovek.so");
        const sdk::EntryPoint stale = vek_open;
        sdk::unload();
        QCOMPARE(plib_handle, std::intptr_t{0});
        QCOMPARE(initialized, 0);
        QVERIFY(vek_open == stale);
        load("libtarvozent.so");
        QVERIFY(vek_open == nullptr);
    }

    void unloadWithNothingLoadedOnlyResetsInitialized()
    {
        initialized = 1;
        Console console;
        sdk::unload();
        QCOMPARE(initialized, 0);
        QCOMPARE(plib_handle, std::intptr_t{0});
        QVERIFY(console.written().isEmpty());
    }

    void aDriverCallingItsOwnNameReachesItsOwn()
    {
        load("libtarvovek.so");
        QCOMPARE(sdk::call<vek_close>(std::int64_t{1}, 0), 0x0E);
    }

    void aNameOf1023BytesIsTriedAndALongerOneEndsTheProgram()
    {
        const std::string longest(1023, 'n');
        QCOMPARE(load(longest.c_str()).code, 0xFFFFFFFFU);

        QVERIFY(aborts([&longest] { sdk::setLibraryName((longest + "n").c_str()); }));
    }

    void aThousandLoadsLeaveTheLibraryUnloaded()
    {
        Console console;
        for (int i = 0; i < 1000; ++i) {
            QCOMPARE(sdk::openLibrary("libtarvovek.so"), 1);
            sdk::unload();
            console.written();
        }
    }
};

QTEST_APPLESS_MAIN(TestLoader)
#include "test_loader.moc"
