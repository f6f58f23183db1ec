#include "drivers/virtual/cards/storage_card.h"

#include "drivers/virtual/cards/apdu.h"

#include <algorithm>

namespace drivers::cards {

namespace {

// Status words of PC/SC part 3.
constexpr std::uint16_t kFailed = 0x6300;
constexpr std::uint16_t kNoNonVolatileMemory = 0x6387;
constexpr std::uint16_t kWrongKeyLength = 0x6389;
constexpr std::uint16_t kNotAllowed = 0x6986;
constexpr std::uint16_t kNoSuchKeyNumber = 0x6988;
constexpr std::uint16_t kNotSupported = 0x6A81;

constexpr std::uint8_t kClass = 0xFF;

std::uint16_t statusOf(MifareResult result)
{
    switch (result) {
    case MifareResult::ok:
        return sw::kOk;
    case MifareResult::badArgument:
        return sw::kFileNotFound;
    case MifareResult::authenticationFailed:
        return kFailed;
    case MifareResult::notAuthenticated:
        return sw::kSecurityNotSatisfied;
    case MifareResult::accessDenied:
        return kNotAllowed;
    case MifareResult::notAValueBlock:
    case MifareResult::overflow:
        break;
    }
    return sw::kIncompatibleFile;
}

std::int32_t mostSignificantFirst(Bytes::const_iterator at)
{
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8U | *(at + i);
    return static_cast<std::int32_t>(value);
}

std::int32_t leastSignificantFirst(Bytes::const_iterator at)
{
    const Bytes turned{*(at + 3), *(at + 2), *(at + 1), *at};
    return mostSignificantFirst(turned.begin());
}

Reply loadKey(std::map<std::uint8_t, SectorKey> &keys, const Command &command)
{
    if (command.p1 != 0)
        return kNoNonVolatileMemory;
    SectorKey key{};
    if (command.data.size() != key.size())
        return kWrongKeyLength;
    std::copy(command.data.begin(), command.data.end(), key.begin());
    keys[command.p2] = key;
    return sw::kOk;
}

Reply authenticate(MifareCard &card, const std::map<std::uint8_t, SectorKey> &keys, const Command &command)
{
    const Bytes &data = command.data;
    if (command.p1p2() != 0 || data.size() != 5 || data[0] != 0x01 || data[1] != 0x00)
        return sw::kWrongData;
    if (data[3] != 0x60 && data[3] != 0x61)
        return kNotAllowed;
    const auto key = keys.find(data[4]);
    if (key == keys.end())
        return kNoSuchKeyNumber;
    return statusOf(card.authenticate(sectorOfBlock(data[2]), data[3] == 0x60 ? 'A' : 'B', key->second));
}

Reply read(MifareCard &card, const Command &command)
{
    const std::size_t expected = command.expected.value_or(0);
    if (expected != kMifareBlockBytes && expected != 256)
        return static_cast<std::uint16_t>(sw::kExpectLength | kMifareBlockBytes);
    Block16 block{};
    const MifareResult result = card.read(command.p1p2(), block);
    return result == MifareResult::ok ? Reply(Bytes(block.begin(), block.end())) : Reply(statusOf(result));
}

Reply write(MifareCard &card, const Command &command)
{
    Block16 block{};
    if (command.data.size() != block.size())
        return sw::kWrongLength;
    std::copy(command.data.begin(), command.data.end(), block.begin());
    return statusOf(card.write(command.p1p2(), block));
}

// FF D7: the operation and a value, most significant byte first.
Reply valueOperation(MifareCard &card, const Command &command)
{
    if (command.data.size() != 5)
        return sw::kWrongLength;
    const std::int32_t value = mostSignificantFirst(command.data.begin() + 1);
    switch (command.data[0]) {
    case 0x00:
        return statusOf(card.initValue(command.p1p2(), value));
    case 0x01:
        return statusOf(card.increment(command.p1p2(), value));
    case 0x02:
        return statusOf(card.decrement(command.p1p2(), value));
    default:
        return sw::kWrongData;
    }
}

Reply readValue(MifareCard &card, const Command &command)
{
    std::int32_t value = 0;
    const MifareResult result = card.readValue(command.p1p2(), value);
    if (result != MifareResult::ok)
        return statusOf(result);
    const auto bits = static_cast<std::uint32_t>(value);
    return Bytes{static_cast<std::uint8_t>(bits >> 24U), static_cast<std::uint8_t>(bits >> 16U),
                 static_cast<std::uint8_t>(bits >> 8U), static_cast<std::uint8_t>(bits)};
}

// FF D4 increments, FF D8 decrements.
Reply addToBlock(MifareCard &card, const Command &command)
{
    if (command.data.size() != 4)
        return sw::kWrongLength;
    const std::int32_t amount = leastSignificantFirst(command.data.begin());
    return statusOf(command.ins == 0xD4 ? card.increment(command.p1p2(), amount)
                                        : card.decrement(command.p1p2(), amount));
}

// FF C2 00 03: A0 or A1 with the block (80) and the value (81). The reply reports C0 03, the place of an error, SW1
// SW2.
Reply amendment(MifareCard &card, const Command &command)
{
    const Bytes &data = command.data;
    const bool shaped = command.p1p2() == 0x0003 && data.size() == 11 && (data[0] == 0xA0 || data[0] == 0xA1) &&
                        data[1] == 0x09 && data[2] == 0x80 && data[3] == 0x01 && data[5] == 0x81 && data[6] == 0x04;
    if (!shaped)
        return kNotSupported;
    const std::int32_t amount = leastSignificantFirst(data.begin() + 7);
    const std::uint16_t status =
        statusOf(data[0] == 0xA0 ? card.increment(data[4], amount) : card.decrement(data[4], amount));
    const auto place = static_cast<std::uint8_t>(status == sw::kOk ? 0 : 1);
    return Bytes{0xC0, 0x03, place, static_cast<std::uint8_t>(status >> 8U), static_cast<std::uint8_t>(status)};
}

Reply uid(const MifareCard &card, const Command &command)
{
    constexpr std::ptrdiff_t kUidBytes = 4;
    const Block16 &block = card.image().front();
    return command.p1p2() == 0 ? Reply(Bytes(block.begin(), block.begin() + kUidBytes)) : Reply(kNotSupported);
}

} // namespace

Bytes StorageCard::atr()
{
    return {0x3B, 0x8F, 0x80, 0x01, 0x80, 0x4F, 0x0C, 0xA0, 0x00, 0x00,
            0x03, 0x06, 0x03, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x6A};
}

Bytes StorageCard::transmit(const Bytes &command)
{
    const std::optional<Command> parsed = parseCommand(command);
    if (!parsed)
        return Reply(sw::kWrongLength).bytes();
    if (parsed->cla != kClass)
        return Reply(sw::kWrongClass).bytes();
    const auto run = [&]() -> Reply {
        switch (parsed->ins) {
        case 0x82:
            return loadKey(m_keys, *parsed);
        case 0x86:
            return authenticate(m_card, m_keys, *parsed);
        case 0xB0:
            return read(m_card, *parsed);
        case 0xB1:
            return readValue(m_card, *parsed);
        case 0xC2:
            return amendment(m_card, *parsed);
        case 0xCA:
            return uid(m_card, *parsed);
        case 0xD4:
        case 0xD8:
            return addToBlock(m_card, *parsed);
        case 0xD6:
            return write(m_card, *parsed);
        case 0xD7:
            return valueOperation(m_card, *parsed);
        default:
            return sw::kWrongInstruction;
        }
    };
    return run().bytes();
}

} // namespace drivers::cards
