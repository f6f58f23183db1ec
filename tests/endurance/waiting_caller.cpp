// waiting_caller <library> <device> <slot>: powers a card on that is not there yet, waiting for ten minutes. Writes a
// record before and one with the result. An empty device is the default one.
#include "tests/endurance/writer_record.h"
#include "tests/support/driver_api.h"

#include <array>
#include <cstdio>
#include <exception>
#include <string>
#include <unistd.h>

using endurance::WriterRecord;

namespace {

constexpr std::uint32_t kTimeoutMs = 600000;

void record(std::uint32_t kind, int code)
{
    const WriterRecord entry{kind, 0, code};
    if (::write(STDOUT_FILENO, &entry, sizeof entry) != sizeof entry)
        throw std::runtime_error("nobody reads");
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 4)
        return 2;
    try {
        const testsupport::DriverApi driver(argv[1]);
        const sdk::DeviceHandle device = driver.vek_open(*argv[2] == '\0' ? nullptr : argv[2], 0, 0);
        if (device == 0)
            throw std::runtime_error("the device does not open");
        std::array<char, sdk::kAtrSize> atr{};
        std::uint32_t length = 0;
        record(WriterRecord::kBegin, 0);
        const auto slot = static_cast<std::uint8_t>(std::stoul(argv[3]));
        record(WriterRecord::kEnd, driver.vek_icc_poweron(device, slot, kTimeoutMs, atr.data(), &length));
        return driver.vek_close(device, 0);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "waiting_caller: %s\n", error.what());
        return 1;
    }
}
