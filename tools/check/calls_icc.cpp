// CPU cards: power, APDUs, and the applications above them.
#include "tools/check/calls.h"

namespace check {

namespace {

constexpr char kPbocAid[] = "A000000333";
constexpr char kTransaction[] = "P012000000000000Q012000000000000R0040156S006140426T00201U006143837";
constexpr char kSelectMasterFile[] = "00A40000023F00";

std::uint32_t timeout32(const Target &target)
{
    return static_cast<std::uint32_t>(target.timeoutMs);
}

std::uint16_t timeout16(const Target &target)
{
    return static_cast<std::uint16_t>(target.timeoutMs);
}

template <sdk::SsseGetInfo *DriverLibrary::*entry>
int readSocialSecurity(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    return (driver.*entry)(target.handle, target.slot, timeout32(target), buffers.text("record", sdk::kSsseRecordSize),
                           1);
}

int powerOn(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    // An answer to reset has two bytes at least.
    return driver.vek_icc_poweron(target.handle, target.slot, timeout32(target),
                                  buffers.text("atr", sdk::kAtrSize, TextKind::Hexadecimal, 4),
                                  buffers.length<std::uint32_t>("length", sdk::kAtrSize));
}

int exchange(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    return driver.vek_icc_apdu(target.handle, target.slot, buffers.input("command", kSelectMasterFile),
                               sizeof kSelectMasterFile - 1,
                               buffers.text("reply", sdk::kApduReplySize, TextKind::Hexadecimal, 4),
                               buffers.length<std::uint32_t>("length", sdk::kApduReplySize));
}

int readCardInfo(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    constexpr std::uint8_t kFlag = 1;
    return driver.vek_pboc_get_card_info(target.handle, target.slot, timeout16(target), buffers.input("aid", kPbocAid),
                                         buffers.input("tags", "ABCD"), buffers.bytes("interface", 1),
                                         buffers.text("result", sdk::kPbocResultSize),
                                         buffers.length<std::uint16_t>("length", sdk::kPbocResultSize), kFlag);
}

int makeCryptogram(const DriverLibrary &driver, const Target &target, Buffers &buffers)
{
    constexpr int kConstant = 10;
    return driver.vek_pboc_get_arqc(target.handle, target.slot, timeout16(target), buffers.input("aid", kPbocAid),
                                    kConstant, buffers.input("transaction data", kTransaction), sizeof kTransaction - 1,
                                    buffers.text("result", sdk::kPbocResultSize),
                                    buffers.length<std::uint16_t>("length", sdk::kPbocResultSize), 0);
}

} // namespace

std::vector<Call> iccCalls()
{
    return {
        {"vek_icc_poweron", kWaits, {}, powerOn},
        {"vek_icc_poweroff",
         0,
         {"vek_icc_poweron"},
         [](const DriverLibrary &driver, const Target &target, Buffers &) {
             return driver.vek_icc_poweroff(target.handle, target.slot, timeout32(target));
         }},
        {"vek_icc_status",
         kCardStatus,
         {},
         [](const DriverLibrary &driver, const Target &target, Buffers &) {
             return driver.vek_icc_status(target.handle, target.slot);
         }},
        {"vek_icc_apdu", 0, {"vek_icc_poweron"}, exchange},
        {"vek_probe_rf",
         0,
         {},
         [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
             return driver.vek_probe_rf(target.handle, buffers.bytes("state", 1), buffers.bytes("card type", 1));
         }},
        // A bank card counts the transactions that begin, and both calls begin one.
        {"vek_pboc_get_card_info", kWrites | kWaits, {}, readCardInfo},
        {"vek_pboc_get_arqc", kWrites | kWaits, {}, makeCryptogram},
        {"vek_ssse_get_issuer_info", kWaits, {}, readSocialSecurity<&DriverLibrary::vek_ssse_get_issuer_info>},
        {"vek_ssse_get_user_info", kWaits, {}, readSocialSecurity<&DriverLibrary::vek_ssse_get_user_info>},
    };
}

} // namespace check
