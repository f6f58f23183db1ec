// What a PBOC debit/credit application holds: the part of it that its description gives, and the files that a terminal
// reads it from.
#pragma once

#include <string>

#include "drivers/virtual/cards/cryptogram.h"
#include "drivers/virtual/cards/file_tree.h"
#include "drivers/virtual/cards/json_node.h"

namespace drivers::cards {

struct PbocData {
    Bytes label;
    std::uint8_t priority = 1;
    Algorithm algorithm = Algorithm::kTripleDes;
    std::uint8_t keyIndex = 1;
    Bytes cardKey;
    std::string pan;      ///< decimal digits
    std::string sequence; ///< two decimal digits
    Bytes holderName;
    Bytes idType;
    Bytes idNumber;
    std::string effective; ///< YYYYMMDD
    std::string expiry;    ///< YYYYMMDD
    std::string serviceCode;
    std::string country;  ///< of the issuer, four digits
    std::string currency; ///< four digits
    std::uint16_t counter = 0;
    std::uint16_t lastOnlineCounter = 0;
    bool hasElectronicCash = false;
    long balance = 0; ///< in hundredths of the currency's unit
    long limit = 0;
};

/// Throws std::runtime_error with the place.
PbocData loadPbocData(const JsonNode &node);

/// What a terminal has to send with GET PROCESSING OPTIONS and with the first and the second GENERATE AC.
Bytes processingOptionsList();
Bytes firstCryptogramList();
Bytes secondCryptogramList();

/// How many bytes a data object list asks for.
std::size_t listedSize(const Bytes &list);

/// The files of records, and where they are.
std::vector<ElementaryFile> pbocFiles(const PbocData &data);
Bytes fileLocator();

/// Decimal digits, two a byte, padded with 0 on the left to `size` bytes.
Bytes numericBytes(const std::string &digits, std::size_t size);

} // namespace drivers::cards
