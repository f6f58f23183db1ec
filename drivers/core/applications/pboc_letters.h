// What the letters of a PBOC tag list, of transaction data and of our replies mean. docs/pboc-letters.md explains this
// table to users: keep the two together.
#pragma once

#include <array>
#include <cstdint>

namespace drivers::pboc {

/// How the bytes of an element become the text of a reply, and back.
enum class TextForm {
    kDigits,  ///< hexadecimal digits, as many as the element has
    kPadded,  ///< digits padded with F on the right; the padding is left out (account number, track 2)
    kLetters, ///< characters
};

/// Where an element is found.
enum class Source {
    kRecords, ///< the records that the application file locator names, or the reply to SELECT
    kGetData, ///< GET DATA
};

struct TagLetter {
    char letter;
    std::uint32_t tag;
    TextForm form;
    Source source;
};

/// The letters of a tag list.
constexpr std::array<TagLetter, 17> kTagLetters{{
    {'A', 0x5A, TextForm::kPadded, Source::kRecords},    // account number
    {'B', 0x5F20, TextForm::kLetters, Source::kRecords}, // name of the card holder
    {'C', 0x9F61, TextForm::kLetters, Source::kRecords}, // number of the holder's identity document
    {'D', 0x57, TextForm::kPadded, Source::kRecords},    // track 2 equivalent data
    {'E', 0x5F24, TextForm::kDigits, Source::kRecords},  // date of expiry, YYMMDD
    {'F', 0x5F25, TextForm::kDigits, Source::kRecords},  // date from which it is valid, YYMMDD
    {'G', 0x9F62, TextForm::kLetters, Source::kRecords}, // kind of the holder's identity document
    {'H', 0x5F30, TextForm::kDigits, Source::kRecords},  // service code
    {'I', 0x9F36, TextForm::kDigits, Source::kGetData},  // application transaction counter
    {'J', 0x5F34, TextForm::kDigits, Source::kRecords},  // sequence number of the account number
    {'K', 0x5F28, TextForm::kDigits, Source::kRecords},  // country of the issuer
    {'L', 0x9F51, TextForm::kDigits, Source::kRecords},  // currency of the application
    {'M', 0x50, TextForm::kLetters, Source::kRecords},   // label of the application
    {'N', 0x9F13, TextForm::kDigits, Source::kGetData},  // transaction counter of the last online transaction
    {'O', 0x9F17, TextForm::kDigits, Source::kGetData},  // PIN tries left
    {'P', 0x9F79, TextForm::kDigits, Source::kGetData},  // electronic cash balance, in hundredths
    {'Q', 0x9F77, TextForm::kDigits, Source::kGetData},  // electronic cash limit, in hundredths
}};

struct TransactionLetter {
    char letter;
    std::uint32_t tag;
    std::uint32_t alsoTag; ///< a second element with the same value; 0 for none
    std::size_t minDigits; ///< hexadecimal digits of the value
    std::size_t maxDigits;
    bool decimal; ///< decimal digits only
};

/// The letters of transaction data.
constexpr std::array<TransactionLetter, 7> kTransactionLetters{{
    {'P', 0x9F02, 0, 12, 12, true},    // amount
    {'Q', 0x9F03, 0, 12, 12, true},    // other amount
    {'R', 0x9F1A, 0x5F2A, 4, 4, true}, // country of the terminal; its currency has the same number
    {'S', 0x9A, 0, 6, 6, true},        // date, YYMMDD
    {'T', 0x9C, 0, 2, 2, true},        // type of transaction
    {'U', 0x9F21, 0, 6, 6, true},      // time, HHMMSS
    {'V', 0x9F4E, 0, 0, 40, false},    // name of the merchant, GBK
}};

struct ReplyLetter {
    char letter;
    std::uint32_t tag;
    TextForm form;
};

/// The letters of the reply that carries an application cryptogram: all that an issuer needs to check it.
constexpr std::array<ReplyLetter, 18> kCryptogramLetters{{
    {'A', 0x9F26, TextForm::kDigits}, // application cryptogram
    {'B', 0x9F27, TextForm::kDigits}, // cryptogram information
    {'C', 0x9F36, TextForm::kDigits}, // application transaction counter
    {'D', 0x9F10, TextForm::kDigits}, // issuer application data
    {'E', 0x9F37, TextForm::kDigits}, // unpredictable number
    {'F', 0x95, TextForm::kDigits},   // terminal verification results
    {'G', 0x82, TextForm::kDigits},   // application interchange profile
    {'H', 0x9F02, TextForm::kDigits}, // amount
    {'I', 0x9F03, TextForm::kDigits}, // other amount
    {'J', 0x9F1A, TextForm::kDigits}, // country of the terminal
    {'K', 0x5F2A, TextForm::kDigits}, // currency
    {'L', 0x9A, TextForm::kDigits},   // date
    {'M', 0x9C, TextForm::kDigits},   // type of transaction
    {'N', 0x9F21, TextForm::kDigits}, // time
    {'O', 0x9F33, TextForm::kDigits}, // terminal capabilities
    {'P', 0x5A, TextForm::kPadded},   // account number
    {'Q', 0x5F34, TextForm::kDigits}, // sequence number of the account number
    {'R', 0x5F24, TextForm::kDigits}, // date of expiry
}};

} // namespace drivers::pboc
