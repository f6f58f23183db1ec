#include "app/main_window.h"
#include "app/quit_signals.h"
#include "app/standard_streams.h"

#include <QApplication>
#include <QIcon>
#include <QPixmap>

int main(int argc, char *argv[])
{
    keepStandardStreams();
    QApplication application(argc, argv);
    QApplication::setOrganizationName("Tarvo");
    QApplication::setOrganizationDomain("tarvo.example");
    QApplication::setApplicationName("Tarvo Unifold card reader SDK APIs demo application");
    QApplication::setApplicationVersion("1.23.4.25");
    QApplication::setWindowIcon(QIcon(QPixmap(":res/app.svg")));
    quitOnSignals(application);

    MainWindow window;
    window.show();
    return QApplication::exec();
}
