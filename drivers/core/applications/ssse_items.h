// The items of a social security card's files. Those of EF06 are not confirmed by a published source: this table is
// the one place to correct them.
#pragma once

#include <array>
#include <cstdint>

namespace drivers::ssse {

enum class ItemKind {
    kText,      ///< ASCII, padded with 00 or FF
    kGbk,       ///< GBK, padded with 00 or FF
    kHex,       ///< bytes shown as hexadecimal digits
    kDigits,    ///< two decimal digits a byte
    kCardNumber ///< letters and digits padded with FF, or two digits a byte padded with F
};

struct Item {
    std::uint8_t id;
    std::uint8_t length; ///< of the value
    ItemKind kind;
};

/// The application's name: "sx1.sh." and the words "social security" in GBK.
constexpr std::array<std::uint8_t, 15> kApplicationName{0x73, 0x78, 0x31, 0x2E, 0x73, 0x68, 0x2E, 0xC9,
                                                        0xE7, 0xBB, 0xE1, 0xB1, 0xA3, 0xD5, 0xCF};

constexpr std::uint16_t kIssuerFile = 0xEF05;
constexpr std::uint16_t kHolderFile = 0xEF06;

constexpr std::array<Item, 7> kIssuerItems{{
    {0x01, 16, ItemKind::kHex},       // card identification code
    {0x02, 1, ItemKind::kText},       // card type
    {0x03, 4, ItemKind::kText},       // version
    {0x04, 12, ItemKind::kHex},       // initialising body
    {0x05, 4, ItemKind::kDigits},     // date of issue
    {0x06, 4, ItemKind::kDigits},     // date of expiry
    {0x07, 9, ItemKind::kCardNumber}, // card number
}};

constexpr std::array<Item, 7> kHolderItems{{
    {0x08, 18, ItemKind::kText},  // social security number
    {0x09, 30, ItemKind::kGbk},   // name
    {0x4E, 20, ItemKind::kGbk},   // name extension
    {0x0A, 1, ItemKind::kText},   // sex
    {0x0B, 1, ItemKind::kDigits}, // ethnic group
    {0x0C, 3, ItemKind::kDigits}, // birthplace
    {0x0D, 4, ItemKind::kDigits}, // date of birth
}};

} // namespace drivers::ssse
