#include "drivers/core/applications/mifare_value_operations.h"

#include <array>
#include <cstdlib>

namespace drivers {

namespace {

struct Named {
    std::string_view name;
    ValueOperations operations;
};

// By a part of the reader's name; the first that fits counts.
constexpr std::array<Named, 7> kReaders{{
    {"ACR122", ValueOperations::kOneCommand},
    {"ACR125", ValueOperations::kOneCommand},
    {"ACR128", ValueOperations::kOneCommand},
    {"Virtual PCD", ValueOperations::kOneCommand},
    {"5x21", ValueOperations::kTwoCommands},
    {"OMNIKEY 502", ValueOperations::kAmendment},
    {"OMNIKEY 5427", ValueOperations::kAmendment},
}};

constexpr std::array<Named, 4> kOverrides{{
    {"d7", ValueOperations::kOneCommand},
    {"d4", ValueOperations::kTwoCommands},
    {"c2", ValueOperations::kAmendment},
    {"write", ValueOperations::kReadComputeWrite},
}};

Bytes mostSignificantFirst(std::uint32_t value)
{
    return {static_cast<std::uint8_t>(value >> 24U), static_cast<std::uint8_t>(value >> 16U),
            static_cast<std::uint8_t>(value >> 8U), static_cast<std::uint8_t>(value)};
}

Bytes joined(Bytes head, const Bytes &tail)
{
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

} // namespace

ValueOperations valueOperationsOf(std::string_view readerName)
{
    const char *const wanted = std::getenv(kMifareValueVariable); // NOLINT(concurrency-mt-unsafe)
    if (wanted != nullptr) {
        for (const Named &entry : kOverrides) {
            if (entry.name == wanted)
                return entry.operations;
        }
    }
    for (const Named &entry : kReaders) {
        if (readerName.find(entry.name) != std::string_view::npos)
            return entry.operations;
    }
    return ValueOperations::kReadComputeWrite;
}

Bytes valueCommand(ValueOperations operations, ValueChange change, std::uint8_t block, std::uint32_t amount)
{
    const bool up = change == ValueChange::kIncrement;
    const Bytes most = mostSignificantFirst(amount);
    const Bytes least(most.rbegin(), most.rend());
    const auto pick = [up](int increment, int decrement) {
        return static_cast<std::uint8_t>(up ? increment : decrement);
    };
    switch (operations) {
    case ValueOperations::kOneCommand:
        return joined({0xFF, 0xD7, 0x00, block, 0x05, pick(0x01, 0x02)}, most);
    case ValueOperations::kTwoCommands:
        return joined({0xFF, pick(0xD4, 0xD8), 0x00, block, 0x04}, least);
    case ValueOperations::kAmendment: {
        const Bytes head = {0xFF, 0xC2, 0x00, 0x03, 0x0B, pick(0xA0, 0xA1), 0x09, 0x80, 0x01, block, 0x81, 0x04};
        return joined(joined(head, least), {0x00});
    }
    case ValueOperations::kReadComputeWrite:
        break;
    }
    return {};
}

} // namespace drivers
