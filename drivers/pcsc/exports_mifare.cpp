// Calls of Mifare cards, as storage cards of the opened reader.
#include "drivers/core/abi.h"
#include "drivers/core/boundary.h"
#include "drivers/core/text_arguments.h"
#include "drivers/core/wait_time.h"
#include "drivers/pcsc/open_readers.h"

using namespace drivers;

namespace {

// Runs `call(session, card)`. A card that was never found, or found and powered off, is one without authentication.
template <class Call>
int onMifare(sdk::DeviceHandle handle, const Call &call) noexcept
{
    return withDevice(openReaders(), handle, [&](PcscReader &reader) {
        const ReturnCode result = reader.withMifare(call);
        return result == kNotPowered ? kAuthenticationFailed : result;
    });
}

int changeValue(sdk::DeviceHandle handle, ValueChange change, std::uint8_t block, int amount) noexcept
{
    return onMifare(
        handle, [&](MifareSession &session, CardChannel &card) { return session.change(card, change, block, amount); });
}

} // namespace

int vek_mifare_request(sdk::DeviceHandle handle, int timeoutMs, char *type, char *uid)
{
    return withDevice(openReaders(), handle, [&](PcscReader &reader) {
        if (type == nullptr || uid == nullptr)
            return kBadArgument;
        ReturnCode result = reader.requestMifare(waitTime(timeoutMs));
        std::string found;
        if (result == kSuccess)
            result = reader.withMifare(
                [&](MifareSession &, CardChannel &card) { return MifareSession::readUid(card, found); });
        if (result == kSuccess)
            result = copyText(uid, sdk::kMifareUidSize, found);
        return result == kSuccess ? copyText(type, sdk::kMifareTypeSize, "A") : result;
    });
}

int vek_mifare_authentication(sdk::DeviceHandle handle, std::uint8_t sector, char keyType, const char *key)
{
    return withDevice(openReaders(), handle, [&](PcscReader &reader) {
        const auto bytes = exactHexArgument<SectorKey>(key);
        if (!bytes)
            return kBadArgument;
        if (reader.status() != kCardPowered) {
            const ReturnCode found = reader.requestMifare(std::chrono::milliseconds(0));
            if (found != kSuccess)
                return found == kTimeout ? kNoCard : found;
        }
        return reader.withMifare([&](MifareSession &session, CardChannel &card) {
            return session.authenticate(card, sector, keyType, *bytes);
        });
    });
}

int vek_mifare_read_block(sdk::DeviceHandle handle, std::uint8_t block, char *data)
{
    return onMifare(handle, [&](MifareSession &session, CardChannel &card) {
        if (data == nullptr)
            return kBadArgument;
        Block16 bytes{};
        const ReturnCode result = session.read(card, block, bytes);
        if (result != kSuccess)
            return result;
        return copyText(data, sdk::kMifareBlockSize, toHex(Bytes(bytes.begin(), bytes.end())));
    });
}

int vek_mifare_write_block(sdk::DeviceHandle handle, std::uint8_t block, const char *data)
{
    return onMifare(handle, [&](MifareSession &session, CardChannel &card) {
        const auto bytes = exactHexArgument<Block16>(data);
        return bytes ? session.write(card, block, *bytes) : kBadArgument;
    });
}

int vek_mifare_init_value(sdk::DeviceHandle handle, std::uint8_t block, int value)
{
    return onMifare(handle,
                    [&](MifareSession &session, CardChannel &card) { return session.initValue(card, block, value); });
}

int vek_mifare_read_value(sdk::DeviceHandle handle, std::uint8_t block, int *value)
{
    return onMifare(handle, [&](MifareSession &session, CardChannel &card) {
        return value != nullptr ? session.readValue(card, block, *value) : kBadArgument;
    });
}

int vek_mifare_increase_value(sdk::DeviceHandle handle, std::uint8_t block, int value)
{
    return changeValue(handle, ValueChange::kIncrement, block, value);
}

int vek_mifare_decrease_value(sdk::DeviceHandle handle, std::uint8_t block, int value)
{
    return changeValue(handle, ValueChange::kDecrement, block, value);
}

int vek_mifare_change_key(sdk::DeviceHandle handle, std::uint8_t sector, char keyType, const char *key)
{
    return onMifare(handle, [&](MifareSession &session, CardChannel &card) {
        const auto bytes = exactHexArgument<SectorKey>(key);
        return bytes ? session.changeKey(card, sector, keyType, *bytes) : kBadArgument;
    });
}
