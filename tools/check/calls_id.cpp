// The resident ID card module.
#include "tools/check/calls.h"
#include "tools/check/picture_folder.h"

namespace check {

namespace {

std::uint32_t timeout(const Target &target)
{
    return static_cast<std::uint32_t>(target.timeoutMs);
}

int readCard(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    constexpr std::uint32_t kTextPhotoAndBothSides = 2U | 4U | 8U;
    const std::string &folder = pictureFolder();
    return driver.vek_idcr_getinfo(
        target.handle, kTextPhotoAndBothSides, timeout(target), 1,
        buffers.text("info", sdk::kIdInfoSize, TextKind::Utf8), buffers.text("extra", sdk::kIdExtraSize),
        buffers.input("photo path", folder + "/photo.bmp"), buffers.input("front path", folder + "/front.jpg"),
        buffers.input("back path", folder + "/back.jpg"));
}

template <sdk::IdcrReadText *DriverLibrary::*entry, std::size_t size>
int readText(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    return (driver.*entry)(target.handle, timeout(target), buffers.text("text", size));
}

int passThrough(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    constexpr int kCapacity = sdk::kTransiveDataSize;
    auto *const statusWord = buffers.number<std::uint32_t>("status word", 0, UINT32_MAX);
    auto *const data = buffers.bytes("data", sdk::kTransiveDataSize);
    return driver.vek_idcr_transive(target.handle, timeout(target), 0x20, 0x01, statusWord, data, kCapacity,
                                    buffers.number<std::int32_t>("length", 0, kCapacity));
}

} // namespace

std::vector<Call> idCalls()
{
    return {
        {"vek_idcr_getinfo", kWaits, {}, readCard},
        {"vek_idcr_read_samid", kWaits, {}, readText<&DriverLibrary::vek_idcr_read_samid, sdk::kSamIdSize>},
        {"vek_idcr_read_uid", kWaits, {}, readText<&DriverLibrary::vek_idcr_read_uid, sdk::kIdUidSize>},
        {"vek_idcr_read_emid", kWaits, {}, readText<&DriverLibrary::vek_idcr_read_emid, sdk::kIdEmidSize>},
        {"vek_idcr_read_dn", kWaits, {}, readText<&DriverLibrary::vek_idcr_read_dn, sdk::kIdDnSize>},
        {"vek_idcr_transive", kWaits, {}, passThrough},
    };
}

} // namespace check
