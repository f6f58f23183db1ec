// Reading JSON texts against the schemas that the project ships.
#pragma once

#include "drivers/virtual/tray/tray_error.h"

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace drivers::tray {

/// Parses a text. `file` is only named in the error. Throws TrayError with line and column.
nlohmann::json parseJson(const std::string &text, const std::string &file, TrayError::Subject subject);

/// Checks a document against an embedded schema (its file name). Throws TrayError naming `file`, the first places that
/// do not fit, and why.
void checkAgainstSchema(const nlohmann::json &document, std::string_view schema, const std::string &file,
                        TrayError::Subject subject);

/// Checks a card against the schema of its kind.
void checkCard(const nlohmann::json &card, const std::string &file);

} // namespace drivers::tray
