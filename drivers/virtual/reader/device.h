// An open device with all that it can do.
#pragma once

#include "drivers/virtual/reader/connection.h"
#include "drivers/virtual/reader/cpu_slots.h"
#include "drivers/virtual/reader/id_module.h"
#include "drivers/virtual/reader/mifare_field.h"
#include "drivers/virtual/reader/stripe_reader.h"

#include <memory>

namespace drivers::reader {

struct Device {
    Device(const DeviceEntry &entry, std::shared_ptr<tray::Tray> tray, int baud)
        : connection(entry, std::move(tray), baud)
    {
    }

    Connection connection;
    CpuSlots cpu{connection};
    MifareField mifare{connection};
    FieldProbe probe{connection};
    StripeReader stripe{connection};
    IdModule id{connection};
};

} // namespace drivers::reader
