#include "app/identity.h"
#include "app/main_window.h"
#include "app/quit_signals.h"
#include "app/standard_streams.h"

#include <QApplication>

int main(int argc, char *argv[])
{
    keepStandardStreams();
    QApplication application(argc, argv);
    setIdentity();
    quitOnSignals(application);

    MainWindow window;
    window.show();
    return QApplication::exec();
}
