// The contact slot. A card lies in it for good; it answers every command that it understands with 9000.
#include "examples/driver/exports.h"

#include <cstring>

namespace {

constexpr char kAtr[] = "3B00";
constexpr std::uint32_t kHeaderDigits = 8; // CLA INS P1 P2

bool powered = false;

// The bench's pages start with "automatic": the driver takes the slot that has a card.
bool isOurSlot(std::uint8_t slot)
{
    return slot == sdk::kSlotContact || slot == sdk::kSlotAutomatic;
}

bool isHexadecimal(const char *text, std::uint32_t length)
{
    return length % 2 == 0 && strnlen(text, length) == length && std::strspn(text, "0123456789ABCDEFabcdef") >= length;
}

} // namespace

int vek_icc_poweron(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t /*timeoutMs*/, char *atr,
                    std::uint32_t *length)
{
    if (!example::isOpen(handle))
        return example::kBadHandle;
    if (atr == nullptr || length == nullptr)
        return example::kBadArgument;
    if (!isOurSlot(slot))
        return example::kNotSupported;
    powered = true;
    std::memcpy(atr, kAtr, sizeof kAtr);
    *length = sizeof kAtr - 1;
    return example::kSuccess;
}

int vek_icc_poweroff(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t /*timeoutMs*/)
{
    if (!example::isOpen(handle))
        return example::kBadHandle;
    if (!isOurSlot(slot))
        return example::kNotSupported;
    powered = false;
    return example::kSuccess;
}

int vek_icc_status(sdk::DeviceHandle handle, std::uint8_t slot)
{
    if (!example::isOpen(handle))
        return example::kBadHandle;
    constexpr int kPresent = 1;
    constexpr int kPowered = 2;
    if (!isOurSlot(slot))
        return example::kNotSupported;
    return powered ? kPowered : kPresent;
}

int vek_icc_apdu(sdk::DeviceHandle handle, std::uint8_t slot, const char *command, std::uint32_t commandLength,
                 char *reply, std::uint32_t *replyLength)
{
    if (!example::isOpen(handle))
        return example::kBadHandle;
    if (command == nullptr || reply == nullptr || replyLength == nullptr || !isHexadecimal(command, commandLength))
        return example::kBadArgument;
    if (!isOurSlot(slot))
        return example::kNotSupported;
    if (!powered)
        return example::kNotPowered;
    const char *const status = commandLength < kHeaderDigits ? "6700" : "9000";
    std::memcpy(reply, status, 5); // four digits and the NUL
    *replyLength = 4;
    return example::kSuccess;
}
