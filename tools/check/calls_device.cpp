// The device itself and the magnetic stripe.
#include "tools/check/calls.h"

namespace check {

std::vector<Call> deviceCalls()
{
    return {
        {"vek_set_baud",
         kWrites,
         {},
         [](const DriverLibrary &driver, const Target &target, Buffers &) {
             constexpr int kRate = 9600;
             constexpr std::uint8_t kStored = 1;
             return driver.vek_set_baud(target.handle, kRate, kStored);
         }},
        {"vek_firm_version",
         0,
         {},
         [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
             return driver.vek_firm_version(target.handle,
                                            buffers.text("version", sdk::kFirmVersionSize, TextKind::Utf8),
                                            buffers.length<std::uint32_t>("length", sdk::kFirmVersionSize));
         }},
        {"vek_beep",
         0,
         {},
         [](const DriverLibrary &driver, const Target &target, Buffers &) {
             return driver.vek_beep(target.handle, 1, 1, 1);
         }},
    };
}

std::vector<Call> stripeCalls()
{
    return {
        // The reader may keep its mode, so this is a write.
        {"vek_msr_mode_switch",
         kWrites,
         {},
         [](const DriverLibrary &driver, const Target &target, Buffers &) {
             return driver.vek_msr_mode_switch(target.handle, sdk::kMsrModeCommand);
         }},
        {"vek_msr_qm_start",
         0,
         {},
         [](const DriverLibrary &driver, const Target &target, Buffers &) {
             return driver.vek_msr_qm_start(target.handle);
         }},
        {"vek_msr_qm_status",
         kMsrStatus,
         {"vek_msr_qm_start"},
         [](const DriverLibrary &driver, const Target &target, Buffers &) {
             return driver.vek_msr_qm_status(target.handle);
         }},
        {"vek_msr_qm_get",
         0,
         {"vek_msr_qm_start", "vek_msr_qm_status"},
         [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
             char *const track1 = buffers.text("track 1", sdk::kTrackSize);
             char *const track2 = buffers.text("track 2", sdk::kTrackSize);
             char *const track3 = buffers.text("track 3", sdk::kTrackSize);
             return driver.vek_msr_qm_get(
                 target.handle, track1, track2, track3, buffers.length<int>("length 1", sdk::kTrackSize),
                 buffers.length<int>("length 2", sdk::kTrackSize), buffers.length<int>("length 3", sdk::kTrackSize));
         }},
        {"vek_msr_qm_stop",
         0,
         {"vek_msr_qm_start"},
         [](const DriverLibrary &driver, const Target &target, Buffers &) {
             return driver.vek_msr_qm_stop(target.handle);
         }},
        {"vek_msr_write",
         kWrites | kWaits,
         {},
         [](const DriverLibrary &driver, const Target &target, Buffers &buffers) {
             constexpr int kTrack2 = 2;
             return driver.vek_msr_write(target.handle, kTrack2, 0, buffers.input("track 1", ""),
                                         buffers.input("track 2", "0123456789"), buffers.input("track 3", ""),
                                         target.timeoutMs);
         }},
    };
}

} // namespace check
