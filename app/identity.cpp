#include "app/identity.h"

#include <QApplication>
#include <QIcon>
#include <QPixmap>

void setIdentity()
{
    QApplication::setOrganizationName("Tarvo");
    QApplication::setOrganizationDomain("tarvo.example");
    QApplication::setApplicationName("Tarvo Unifold card reader SDK APIs demo application");
    QApplication::setApplicationVersion("1.23.4.25");
    QApplication::setWindowIcon(QIcon(QPixmap(":res/app.svg")));
}
