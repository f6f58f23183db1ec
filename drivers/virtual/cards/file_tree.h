// The files of a card: a master file with directories and elementary files (ISO 7816-4).
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "drivers/core/bytes.h"
#include "drivers/virtual/cards/application.h"

namespace drivers::cards {

constexpr std::uint16_t kMasterFileId = 0x3F00;

enum class Access { kAlways, kPin, kNever };

struct ElementaryFile {
    std::uint16_t id = 0;
    std::uint8_t shortId = 0; ///< 1 to 30; 0 for none
    Access read = Access::kAlways;
    Access update = Access::kNever;
    bool hasRecords = false;
    Bytes content;                         ///< of a file without records
    std::map<std::uint8_t, Bytes> records; ///< by number; numbers may be left out
    bool changed = false;
};

struct Pin {
    std::uint8_t reference = 0; ///< P2 of VERIFY
    Bytes value;                ///< as VERIFY carries it
    int tries = 3;
    int left = 3;
    bool verified = false;
};

struct Directory {
    std::uint16_t id = 0;
    Bytes name;
    std::optional<std::string> place; ///< of its object in the card's description; nothing for one that has none
    Bytes proprietary;                ///< value of the template A5 of the file control information; empty for none
    Directory *parent = nullptr;
    std::vector<ElementaryFile> files;
    std::vector<std::unique_ptr<Directory>> directories;
    std::map<std::uint16_t, Bytes> dataObjects; ///< for GET DATA, by P1 P2
    std::optional<Pin> pin;
    std::unique_ptr<Application> application;

    Directory &add(std::uint16_t childId);
    ElementaryFile *file(std::uint16_t fileId);
    ElementaryFile *fileByShortId(std::uint8_t shortId);
    Directory *directory(std::uint16_t directoryId);

    /// The PIN that guards the files of this directory: its own or that of the nearest directory above.
    Pin *guard();

    /// True for the directory itself and everything below it.
    bool contains(const Directory &other) const;
};

/// Calls `visit` for a directory and all below it, parents first.
void forEachDirectory(Directory &root, const std::function<void(Directory &)> &visit);

/// The file control information of a SELECT.
/// @param templateTag 6F or 62
Bytes controlInformation(const Directory &directory, std::uint8_t templateTag);
Bytes controlInformation(const ElementaryFile &file, std::uint8_t templateTag);

} // namespace drivers::cards
