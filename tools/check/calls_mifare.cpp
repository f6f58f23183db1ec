// Mifare Classic cards. The block that is used is the first of sector 1, under the key with which cards are delivered.
#include "tools/check/calls.h"

namespace check {

namespace {

constexpr std::uint8_t kSector = 1;
constexpr std::uint8_t kBlock = 4;
constexpr char kKeyType = 'A';
constexpr char kDeliveryKey[] = "FFFFFFFFFFFF";
constexpr std::size_t kBlockDigits = 32;

template <sdk::MifareKey *DriverLibrary::*entry>
int useKey(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    return (driver.*entry)(target.handle, kSector, kKeyType, buffers.input("key", kDeliveryKey));
}

template <sdk::MifareValue *DriverLibrary::*entry, int value>
int useValue(const DriverLibrary &driver, const Target &target, Buffers &)
{
    return (driver.*entry)(target.handle, kBlock, value);
}

int find(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    char *const type = buffers.text("type", sdk::kMifareTypeSize, TextKind::Any, 1);
    return driver.vek_mifare_request(target.handle, target.timeoutMs, type, buffers.text("uid", sdk::kMifareUidSize));
}

int readBlock(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    return driver.vek_mifare_read_block(
        target.handle, kBlock, buffers.text("data", sdk::kMifareBlockSize, TextKind::Hexadecimal, kBlockDigits));
}

/// Writes what stands in the block, or zeros where it cannot be read.
int writeBlock(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    Buffers present("vek_mifare_read_block");
    char *const data = present.text("data", sdk::kMifareBlockSize);
    if (driver.vek_mifare_read_block == nullptr || driver.vek_mifare_read_block(target.handle, kBlock, data) != 0 ||
        present.problem(true))
        return driver.vek_mifare_write_block(target.handle, kBlock,
                                             buffers.input("data", std::string(kBlockDigits, '0')));
    return driver.vek_mifare_write_block(target.handle, kBlock, buffers.input("data", data));
}

int readValue(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    return driver.vek_mifare_read_value(target.handle, kBlock, buffers.number<int>("value", INT32_MIN, INT32_MAX));
}

} // namespace

std::vector<Call> mifareCalls()
{
    const std::vector<const char *> find1 = {"vek_mifare_request"};
    const std::vector<const char *> enter = {"vek_mifare_request", "vek_mifare_authentication"};
    const std::vector<const char *> wallet = {"vek_mifare_request", "vek_mifare_authentication",
                                              "vek_mifare_init_value"};
    return {
        {"vek_mifare_request", kWaits, {}, find},
        {"vek_mifare_authentication", 0, find1, useKey<&DriverLibrary::vek_mifare_authentication>},
        {"vek_mifare_read_block", 0, enter, readBlock},
        {"vek_mifare_read_value", 0, enter, readValue},
        {"vek_mifare_write_block", kWrites, enter, writeBlock},
        {"vek_mifare_init_value", kWrites, enter, useValue<&DriverLibrary::vek_mifare_init_value, 100>},
        {"vek_mifare_increase_value", kWrites, wallet, useValue<&DriverLibrary::vek_mifare_increase_value, 5>},
        {"vek_mifare_decrease_value", kWrites, wallet, useValue<&DriverLibrary::vek_mifare_decrease_value, 5>},
        // The key stays what it is.
        {"vek_mifare_change_key", kWrites, enter, useKey<&DriverLibrary::vek_mifare_change_key>},
    };
}

} // namespace check
