// A driver library with one fault, named by UNIFOLD_BAD_DRIVER_FAULT when it is compiled. In all else it behaves: one
// USB device, version and card status served, the rest not supported.
#include "drivers/core/abi.h"
#include "drivers/core/return_codes.h"
#include "tests/support/bad_driver_faults.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <unistd.h>

using namespace drivers;
using sdk::DeviceHandle;

namespace {

constexpr Fault kFault = Fault::UNIFOLD_BAD_DRIVER_FAULT;

DeviceHandle opened = 0;

bool isOpen(DeviceHandle handle)
{
    return kFault == Fault::AcceptsMadeUpHandles || (handle != 0 && handle == opened);
}

int unserved(DeviceHandle handle)
{
    return isOpen(handle) ? kNotSupported : kBadHandle;
}

[[noreturn]] void hang()
{
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

void misbehaveInBeep()
{
    if (kFault == Fault::Crashes)
        std::raise(SIGSEGV);
    if (kFault == Fault::HangsInOurGroup)
        ::setpgid(0, ::getpgid(::getppid()));
    if (kFault == Fault::Hangs || kFault == Fault::HangsInOurGroup)
        hang();
    if (kFault == Fault::Exits)
        std::_Exit(3);
    if (kFault == Fault::Aborts)
        std::abort();
}

} // namespace

int vek_enum_devices(int transport, char **list)
{
    if (transport != sdk::kTransportUsb)
        return 0;
    constexpr char kNames[] = "only|";
    *list = static_cast<char *>(std::malloc(sizeof kNames));
    std::memcpy(*list, kNames, sizeof kNames);
    return kFault == Fault::MiscountsDevices ? 2 : 1;
}

void vek_free_list(char *list)
{
    if (kFault != Fault::KeepsLists)
        std::free(list);
}

std::intptr_t vek_open(const char *device, std::intptr_t, int)
{
    if (device != nullptr && std::strcmp(device, "only") != 0 && kFault != Fault::OpensAnything)
        return 0;
    opened = 0x4711;
    return static_cast<std::intptr_t>(opened);
}

int vek_close(DeviceHandle handle, int)
{
    if (!isOpen(handle))
        return kBadHandle;
    if (kFault != Fault::AcceptsClosedHandles)
        opened = 0;
    return kSuccess;
}

int vek_firm_version(DeviceHandle handle, char *version, std::uint32_t *length)
{
    if (!isOpen(handle))
        return kBadHandle;
    if (version == nullptr || length == nullptr)
        return kBadArgument;
    std::strcpy(version, "1.0");
    *length = 3;
    if (kFault == Fault::WritesPastBuffer)
        version[sdk::kFirmVersionSize] = '\0';
    if (kFault == Fault::WritesBeforeBuffer)
        version[-1] = 'x';
    if (kFault == Fault::LeavesOutNul)
        std::memset(version, 'x', sdk::kFirmVersionSize);
    if (kFault == Fault::GivesHugeLength)
        *length = 0xFFFFFFFFU;
    if (kFault == Fault::GivesNoUtf8)
        std::strcpy(version, "\xC0\x80");
    return kFault == Fault::HasOwnCodes ? -100 : kSuccess;
}

int vek_beep(DeviceHandle handle, int, int, int)
{
    if (!isOpen(handle))
        return kBadHandle;
    misbehaveInBeep();
    return kSuccess;
}

int vek_icc_poweron(DeviceHandle handle, std::uint8_t, std::uint32_t timeoutMs, char *, std::uint32_t *)
{
    if (!isOpen(handle))
        return kBadHandle;
    const std::uint32_t late = kFault == Fault::IgnoresTimeout ? 3000 : 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(timeoutMs + late));
    return kTimeout;
}

int vek_mifare_request(DeviceHandle handle, int, char *, char *)
{
    return unserved(handle);
}

int vek_mifare_authentication(DeviceHandle handle, std::uint8_t, char, const char *key)
{
    if (!isOpen(handle))
        return kBadHandle;
    if (kFault == Fault::ReadsPastArgument)
        return std::count(key, key + 64, 'F') == 12 ? kNoCard : kBadArgument;
    return kNotSupported;
}
