// The return codes of our driver libraries: one table for all of them. docs/return-codes.md explains them to users.
#pragma once

namespace drivers {

enum ReturnCode : int {
    kSuccess = 0,
    kBadHandle = -1,             ///< 0, closed or never given out by vek_open
    kBadArgument = -2,           ///< null pointer, odd hexadecimal, value out of range
    kNoCard = -3,                ///< nothing in the slot or the field
    kCardRemoved = -4,           ///< the card went while in use; power it on again
    kTimeout = -5,               ///< nothing came within the time-out
    kReaderGone = -6,            ///< the reader was unplugged or its service stopped
    kBufferTooSmall = -7,        ///< the reply does not fit the caller's buffer
    kNotSupported = -8,          ///< this driver or reader does not offer the call
    kTransportFailure = -9,      ///< the exchange failed, for no reason named above
    kCardBusy = -10,             ///< another program holds the card exclusively
    kNotPowered = -11,           ///< the card was not powered on
    kAuthenticationFailed = -12, ///< wrong key, or the sector is not authenticated
    kAccessDenied = -13,         ///< the card's access conditions refuse it
    kCardError = -14,            ///< the card answered with an error status or with data that cannot be understood
};

/// vek_icc_status answers with these instead of a code (errors stay negative).
enum CardStatus : int {
    kCardAbsent = 0,
    kCardPresent = 1,
    kCardPowered = 2,
};

} // namespace drivers
