// The whole bench under test over the recording driver, loaded by the real loader through its own button.
#pragma once

#include "tests/support/bench_window.h"
#include "tests/support/recorder.h"

class Bench : public BenchWindow {
public:
    /// Shows the window and, through the driver row and 打开默认USB, loads "libtarvovek.so" and opens the handle 1A2B.
    /// The recorder and the log pane are empty afterwards.
    void openDevice()
    {
        loadDriver();
        press("pushButton_open_default");
        forget();
    }

    void loadDriver()
    {
        loadLibrary();
        // The library outlives a window: it would answer by the scripts of the test before.
        recorder() = Recorder();
        forget();
    }

    /// Empties the log pane and the recorded calls.
    void forget()
    {
        clearLog();
        recorder().calls.clear();
    }

    static QStringList calls()
    {
        QStringList list;
        for (const std::string &call : recorder().calls)
            list << QString::fromStdString(call);
        return list;
    }
};
