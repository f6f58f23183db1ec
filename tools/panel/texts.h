// What the panel calls things, in the window's language.
#pragma once

#include "drivers/virtual/tray/tray_state.h"

#include <QString>

#include <nlohmann/json.hpp>

namespace tray_panel {

/// The slot's name for people.
QString slotLabel(drivers::tray::Slot slot);

/// What the fault does, and when unless always: "vek_beep 返回 -5（自第 3 次起，共 2 次）".
QString faultText(const drivers::tray::Fault &fault);

/// The card's title in the window's language; empty if it has none.
QString cardTitle(const nlohmann::json &card);

} // namespace tray_panel
