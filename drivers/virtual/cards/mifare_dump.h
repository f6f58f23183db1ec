// Dump files of Mifare Classic 1K cards: raw bytes, .eml text and JSON. Pure functions between a file's content and
// the 64 blocks; an import throws std::runtime_error that names the byte count, line or JSON place at fault.
#pragma once

#include "drivers/core/mifare/mifare_layout.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace drivers::cards {

/// 1024 bytes, block after block.
std::string exportRawDump(const MifareImage &image);
MifareImage importRawDump(std::string_view content);

/// 64 lines of 32 hexadecimal digits. Taken in are either case, CR LF, blanks around a line and a last line without
/// its end; empty lines are allowed after the last block only.
std::string exportEmlDump(const MifareImage &image);
MifareImage importEmlDump(std::string_view content);

/// An object of `Card` (UID), `blocks` ("0" to "63": 32 digits) and `SectorKeys` ("0" to "15": KeyA, KeyB,
/// AccessConditions). On import all blocks must be there; keys and access conditions of `SectorKeys`, if given, take
/// the place of those in the trailer, which a reader cannot read fully; other members are ignored.
nlohmann::json exportJsonDump(const MifareImage &image);
MifareImage importJsonDump(const nlohmann::json &dump);

} // namespace drivers::cards
