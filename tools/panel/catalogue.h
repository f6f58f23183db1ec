// The window's language.
#pragma once

#include <QLocale>

namespace tray_panel {

/// Installs the English catalogue if the locale is English; otherwise the texts stay Chinese, as they are written in
/// the code. To be called once, after the application object was made.
void installCatalogue(const QLocale &locale);

} // namespace tray_panel
