#include "tools/panel/catalogue.h"

#include <QCoreApplication>
#include <QTranslator>

namespace tray_panel {

void installCatalogue(const QLocale &locale)
{
    if (locale.language() != QLocale::English)
        return;
    auto *translator = new QTranslator(QCoreApplication::instance());
    if (translator->load(":/panel/panel_en.qm"))
        QCoreApplication::installTranslator(translator);
}

} // namespace tray_panel
