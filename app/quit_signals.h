// Ends the program through its event loop when it is told to stop from outside, so that destructors run: the ID card
// page must remove its pictures also after Ctrl-C.
#pragma once

class QCoreApplication;

/// SIGINT, SIGTERM and SIGHUP (unless ignored, as under nohup) quit `application`. They take effect when the event loop
/// runs again, that is, after a blocking SDK call has returned. A closed standard output no longer ends the program.
void quitOnSignals(QCoreApplication &application);
