// A tray of a test's own, and the driver library as a program sees it.
#pragma once

#include "drivers/virtual/tray/tray.h"
#include "sdk/contracts.h"

#include <QTemporaryDir>
#include <QTest>

#include <cstdlib>
#include <dlfcn.h>

namespace virtual_test {

/// A fresh tray in a temporary folder; the driver finds it too, as long as this lives.
class TrayWorld {
public:
    TrayWorld()
    {
        qputenv(drivers::tray::kTrayVariable, m_folder.filePath("tray").toUtf8());
        m_tray = std::make_unique<drivers::tray::Tray>(drivers::tray::trayFolder());
    }
    ~TrayWorld() { qunsetenv(drivers::tray::kTrayVariable); }
    TrayWorld(const TrayWorld &) = delete;
    TrayWorld &operator=(const TrayWorld &) = delete;

    drivers::tray::Tray &tray() { return *m_tray; }

    /// The card that lies in a slot.
    std::string cardIn(drivers::tray::Slot slot) { return m_tray->state()->at(slot).card; }

    void take(drivers::tray::Slot slot)
    {
        m_tray->update([slot](drivers::tray::TrayState &state) { state.take(slot); });
    }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<drivers::tray::Tray> m_tray;
};

/// The virtual driver's library, loaded as the bench loads it.
class DriverLibrary {
public:
    DriverLibrary() : m_library(::dlopen("libtarvovek.so", RTLD_LAZY)) // NOLINT(concurrency-mt-unsafe)
    {
        if (m_library == nullptr)
            qFatal("%s", ::dlerror()); // NOLINT(concurrency-mt-unsafe)
    }
    ~DriverLibrary() { ::dlclose(m_library); }
    DriverLibrary(const DriverLibrary &) = delete;
    DriverLibrary &operator=(const DriverLibrary &) = delete;

    /// An entry point as a function of its contract.
    template <class Contract>
    Contract *entry(const char *name) const
    {
        void *const symbol = ::dlsym(m_library, name);
        if (symbol == nullptr)
            qFatal("%s is missing", name);
        return reinterpret_cast<Contract *>(symbol); // NOLINT(*-reinterpret-cast)
    }

private:
    void *m_library;
};

/// A device that is open while this lives.
class OpenDevice {
public:
    explicit OpenDevice(const DriverLibrary &library, const char *name = nullptr, int baud = 0)
        : m_library(library), m_handle(library.entry<sdk::Open>("vek_open")(name, 0, baud))
    {
    }
    ~OpenDevice() { close(); }
    OpenDevice(const OpenDevice &) = delete;
    OpenDevice &operator=(const OpenDevice &) = delete;

    operator sdk::DeviceHandle() const { return m_handle; } // NOLINT(*-explicit-*): stands for the handle in calls

    int close()
    {
        const sdk::DeviceHandle handle = std::exchange(m_handle, 0);
        return handle == 0 ? 0 : m_library.entry<sdk::Close>("vek_close")(handle, 0);
    }

private:
    const DriverLibrary &m_library;
    sdk::DeviceHandle m_handle;
};

} // namespace virtual_test
