#include "tests/endurance/card_work.h"

#include <cstdio>
#include <random>

namespace endurance {

using nlohmann::json;

namespace {

using Kind = Operation::Kind;

constexpr std::uint8_t kDataBlocks[] = {1, 2, 4};
constexpr std::uint8_t kValueBlocks[] = {5, 6};
constexpr int kSelections[] = {1, 2, 3, 12, 13, 23, 123};
constexpr int kSwipeTimeoutMs = 1000;

std::string hexByte(unsigned value)
{
    char text[3];
    std::snprintf(text, sizeof text, "%02X", value & 0xFFU);
    return text;
}

std::string hexWord(std::uint32_t value)
{
    return hexByte(value) + hexByte(value >> 8U) + hexByte(value >> 16U) + hexByte(value >> 24U);
}

std::uint32_t wordOf(const std::string &hex)
{
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = (value << 8U) | static_cast<std::uint32_t>(std::stoul(hex.substr(2 * i, 2), nullptr, 16));
    return value;
}

std::string valueBlock(std::uint32_t value, const std::string &addresses)
{
    return hexWord(value) + hexWord(~value) + hexWord(value) + addresses;
}

std::string ownAddress(std::uint8_t block)
{
    return hexByte(block) + hexByte(~unsigned{block}) + hexByte(block) + hexByte(~unsigned{block});
}

/// The digits of the number first, so that no two operations write the same.
std::string digits(std::uint32_t number, std::size_t length, std::mt19937 &random)
{
    std::string text = std::to_string(number);
    while (text.size() < length)
        text += static_cast<char>('0' + random() % 10);
    return text;
}

void fillStripe(Operation &operation, std::uint32_t number, std::mt19937 &random)
{
    operation.selection = kSelections[random() % std::size(kSelections)];
    for (const char digit : std::to_string(operation.selection)) {
        const auto track = static_cast<std::size_t>(digit - '1');
        constexpr std::size_t kLeast = 12;
        operation.tracks.at(track) = digits(number, kLeast + random() % 25, random);
    }
}

} // namespace

Operation operationOf(std::uint32_t seed, std::uint32_t number)
{
    std::seed_seq both{seed, number};
    std::mt19937 random(both);
    Operation operation{};
    operation.kind = static_cast<Kind>(random() % 5);
    switch (operation.kind) {
    case Kind::WriteBlock:
        operation.block = kDataBlocks[random() % std::size(kDataBlocks)];
        operation.data = digits(number, 32, random);
        break;
    case Kind::InitValue:
        operation.block = kValueBlocks[random() % std::size(kValueBlocks)];
        operation.value = static_cast<std::int32_t>(number);
        break;
    case Kind::Increase:
    case Kind::Decrease:
        operation.block = kValueBlocks[random() % std::size(kValueBlocks)];
        operation.value = static_cast<std::int32_t>(1 + random() % 1000);
        break;
    case Kind::WriteStripe:
        fillStripe(operation, number, random);
        break;
    }
    return operation;
}

int openSector(const DriverApi &driver, sdk::DeviceHandle device, std::uint8_t block)
{
    std::array<char, sdk::kMifareTypeSize> type{};
    std::array<char, sdk::kMifareUidSize> uid{};
    if (const int result = driver.vek_mifare_request(device, 0, type.data(), uid.data()); result != 0)
        return result;
    return driver.vek_mifare_authentication(device, static_cast<std::uint8_t>(block / 4), 'A', "FFFFFFFFFFFF");
}

int perform(const DriverApi &driver, sdk::DeviceHandle device, const Operation &operation)
{
    const auto &tracks = operation.tracks;
    switch (operation.kind) {
    case Kind::WriteBlock:
        return driver.vek_mifare_write_block(device, operation.block, operation.data.c_str());
    case Kind::InitValue:
        return driver.vek_mifare_init_value(device, operation.block, operation.value);
    case Kind::Increase:
        return driver.vek_mifare_increase_value(device, operation.block, operation.value);
    case Kind::Decrease:
        return driver.vek_mifare_decrease_value(device, operation.block, operation.value);
    case Kind::WriteStripe:
        break;
    }
    return driver.vek_msr_write(device, operation.selection, 0, tracks[0].c_str(), tracks[1].c_str(), tracks[2].c_str(),
                                kSwipeTimeoutMs);
}

Cards Cards::after(const Operation &operation) const
{
    Cards changed = *this;
    if (operation.isStripe()) {
        for (const char digit : std::to_string(operation.selection))
            changed.stripe["tracks"][std::string(1, digit)] =
                operation.tracks.at(static_cast<std::size_t>(digit - '1'));
        return changed;
    }
    json &block = changed.mifare["blocks"][operation.block];
    const std::string before = block.get<std::string>();
    const auto amount = static_cast<std::uint32_t>(operation.value);
    switch (operation.kind) {
    case Kind::WriteBlock:
        block = operation.data;
        break;
    case Kind::InitValue:
        block = valueBlock(amount, ownAddress(operation.block));
        break;
    case Kind::Increase:
        block = valueBlock(wordOf(before) + amount, before.substr(24));
        break;
    default:
        block = valueBlock(wordOf(before) - amount, before.substr(24));
    }
    return changed;
}

} // namespace endurance
