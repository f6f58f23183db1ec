#include "drivers/pcsc/scard_codes.h"

#include <cstdint>

namespace drivers {

namespace {

// A PC/SC code is 32 bits in a LONG that has 64 here; whether the upper half repeats the sign depends on who made it.
constexpr std::uint32_t bits(LONG scard)
{
    return static_cast<std::uint32_t>(scard);
}

} // namespace

ReturnCode returnCodeOf(LONG scard)
{
    switch (bits(scard)) {
    case bits(SCARD_S_SUCCESS):
        return kSuccess;
    case bits(SCARD_E_INVALID_PARAMETER):
    case bits(SCARD_E_INVALID_VALUE):
        return kBadArgument;
    case bits(SCARD_E_NO_SMARTCARD):
        return kNoCard;
    case bits(SCARD_W_REMOVED_CARD):
        return kCardRemoved;
    case bits(SCARD_E_TIMEOUT):
        return kTimeout;
    case bits(SCARD_E_UNKNOWN_READER):
    case bits(SCARD_E_READER_UNAVAILABLE):
    case bits(SCARD_E_NO_READERS_AVAILABLE):
    case bits(SCARD_E_NO_SERVICE):
    case bits(SCARD_E_SERVICE_STOPPED):
    case bits(SCARD_P_SHUTDOWN):
    case bits(SCARD_E_INVALID_HANDLE):
        return kReaderGone;
    case bits(SCARD_E_INSUFFICIENT_BUFFER):
        return kBufferTooSmall;
    case bits(SCARD_E_SHARING_VIOLATION):
        return kCardBusy;
    case bits(SCARD_W_RESET_CARD):
    case bits(SCARD_W_UNPOWERED_CARD):
        return kNotPowered;
    default:
        return kTransportFailure;
    }
}

bool isServiceLost(LONG scard)
{
    switch (bits(scard)) {
    case bits(SCARD_E_NO_SERVICE):
    case bits(SCARD_E_SERVICE_STOPPED):
    case bits(SCARD_E_INVALID_HANDLE):
    case bits(SCARD_P_SHUTDOWN):
    case bits(SCARD_F_COMM_ERROR):
        return true;
    default:
        return false;
    }
}

} // namespace drivers
