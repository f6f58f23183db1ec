// The calls of Mifare Classic cards.
#include "drivers/core/abi.h"
#include "drivers/virtual/exports/library.h"

using namespace drivers;
using cards::MifareCard;
using exports::serve;

int vek_mifare_request(sdk::DeviceHandle handle, int timeoutMs, char *type, char *uid)
{
    return serve(handle, [&](reader::Device &device) {
        if (type == nullptr || uid == nullptr)
            return kBadArgument;
        std::string foundType;
        std::string foundUid;
        ReturnCode result = device.mifare.request(waitTime(timeoutMs), foundType, foundUid);
        if (result == kSuccess)
            result = copyText(type, sdk::kMifareTypeSize, foundType);
        return result == kSuccess ? copyText(uid, sdk::kMifareUidSize, foundUid) : result;
    });
}

int vek_mifare_authentication(sdk::DeviceHandle handle, std::uint8_t sector, char keyType, const char *key)
{
    return serve(handle, [&](reader::Device &device) {
        const auto bytes = exactHexArgument<SectorKey>(key);
        return bytes ? device.mifare.authenticate(sector, keyType, *bytes) : kBadArgument;
    });
}

int vek_mifare_change_key(sdk::DeviceHandle handle, std::uint8_t sector, char keyType, const char *key)
{
    return serve(handle, [&](reader::Device &device) {
        const auto bytes = exactHexArgument<SectorKey>(key);
        if (!bytes)
            return kBadArgument;
        return device.mifare.run([&](MifareCard &card) { return card.changeKey(sector, keyType, *bytes); });
    });
}

int vek_mifare_read_block(sdk::DeviceHandle handle, std::uint8_t block, char *data)
{
    return serve(handle, [&](reader::Device &device) {
        if (data == nullptr)
            return kBadArgument;
        Block16 bytes{};
        const ReturnCode result = device.mifare.run([&](MifareCard &card) { return card.read(block, bytes); });
        if (result != kSuccess)
            return result;
        return copyText(data, sdk::kMifareBlockSize, toHex(Bytes(bytes.begin(), bytes.end())));
    });
}

int vek_mifare_write_block(sdk::DeviceHandle handle, std::uint8_t block, const char *data)
{
    return serve(handle, [&](reader::Device &device) {
        const auto bytes = exactHexArgument<Block16>(data);
        if (!bytes)
            return kBadArgument;
        return device.mifare.run([&](MifareCard &card) { return card.write(block, *bytes); });
    });
}

int vek_mifare_init_value(sdk::DeviceHandle handle, std::uint8_t block, int value)
{
    return serve(handle, [&](reader::Device &device) {
        return device.mifare.run([&](MifareCard &card) { return card.initValue(block, value); });
    });
}

int vek_mifare_increase_value(sdk::DeviceHandle handle, std::uint8_t block, int value)
{
    return serve(handle, [&](reader::Device &device) {
        return device.mifare.run([&](MifareCard &card) { return card.increment(block, value); });
    });
}

int vek_mifare_decrease_value(sdk::DeviceHandle handle, std::uint8_t block, int value)
{
    return serve(handle, [&](reader::Device &device) {
        return device.mifare.run([&](MifareCard &card) { return card.decrement(block, value); });
    });
}

int vek_mifare_read_value(sdk::DeviceHandle handle, std::uint8_t block, int *value)
{
    return serve(handle, [&](reader::Device &device) {
        if (value == nullptr)
            return kBadArgument;
        std::int32_t read = 0;
        const ReturnCode result = device.mifare.run([&](MifareCard &card) { return card.readValue(block, read); });
        if (result == kSuccess)
            *value = read;
        return result;
    });
}
