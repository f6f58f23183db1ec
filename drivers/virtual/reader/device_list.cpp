#include "drivers/virtual/reader/device_list.h"

#include "sdk/contracts.h"

#include <algorithm>

namespace drivers::reader {

namespace {

/// Ports of each kind: serial ones from SDT0001, USB ones from SDT1001.
constexpr int kSdtPorts = 16;

std::string sdtPort(int number)
{
    const std::string digits = std::to_string(number);
    return "SDT" + std::string(4 - digits.size(), '0') + digits;
}

std::vector<DeviceEntry> makeDevices()
{
    std::vector<DeviceEntry> devices = {
        {sdk::kTransportUsb, "VUSB0001", std::nullopt},
        {sdk::kTransportUsb, "VUSB0002", std::nullopt},
        {sdk::kTransportSerial, "VCOM1", std::nullopt},
        {sdk::kTransportSerial, "VCOM2", std::nullopt},
        {sdk::kTransportPcsc, "Unifold Virtual Reader [Contact] (TRAY0001) 00 00", tray::Slot::Contact},
        {sdk::kTransportPcsc, "Unifold Virtual Reader [Contactless] (TRAY0001) 00 01", tray::Slot::Antenna},
    };
    for (int port = 1; port <= kSdtPorts; ++port) {
        devices.push_back({sdk::kTransportSdt, sdtPort(1000 + port), std::nullopt});
        devices.push_back({sdk::kTransportSdt, sdtPort(port), std::nullopt});
    }
    return devices;
}

const std::vector<DeviceEntry> &allDevices()
{
    static const std::vector<DeviceEntry> devices = makeDevices();
    return devices;
}

} // namespace

std::vector<std::string> deviceNames(int transport)
{
    std::vector<std::string> names;
    for (const DeviceEntry &device : allDevices()) {
        if (device.transport == transport)
            names.push_back(device.name);
    }
    return names;
}

const DeviceEntry *findDevice(std::string_view name)
{
    const auto &devices = allDevices();
    const auto found =
        std::find_if(devices.begin(), devices.end(), [name](const DeviceEntry &device) { return device.name == name; });
    return found == devices.end() ? nullptr : &*found;
}

const DeviceEntry &defaultDevice()
{
    return allDevices().front();
}

} // namespace drivers::reader
