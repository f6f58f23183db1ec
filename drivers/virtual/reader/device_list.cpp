#include "drivers/virtual/reader/device_list.h"

#include "sdk/contracts.h"

#include <algorithm>

namespace drivers::reader {

namespace {

const std::vector<DeviceEntry> &allDevices()
{
    static const std::vector<DeviceEntry> devices = {
        {sdk::kTransportUsb, "VUSB0001", std::nullopt},
        {sdk::kTransportUsb, "VUSB0002", std::nullopt},
        {sdk::kTransportSerial, "VCOM1", std::nullopt},
        {sdk::kTransportSerial, "VCOM2", std::nullopt},
        {sdk::kTransportPcsc, "Unifold Virtual Reader [Contact] (TRAY0001) 00 00", tray::Slot::Contact},
        {sdk::kTransportPcsc, "Unifold Virtual Reader [Contactless] (TRAY0001) 00 01", tray::Slot::Antenna},
        {sdk::kTransportSdt, "SDT1001", std::nullopt},
        {sdk::kTransportSdt, "SDT0001", std::nullopt},
    };
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
