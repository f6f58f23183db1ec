// The card's side of the connection to pcscd's virtual reader: frames of a 16-bit big-endian length and as many bytes.
#pragma once

#include "drivers/core/bytes.h"
#include "drivers/virtual/tray/file_store.h"

#include <cstdint>
#include <optional>

namespace tray_tool {

class VpcdLink {
public:
    /// Connects to 127.0.0.1. Throws std::system_error.
    explicit VpcdLink(std::uint16_t port);

    /// The next frame; nothing when the reader has closed the connection. Throws std::system_error.
    std::optional<drivers::Bytes> receive();

    /// Throws std::system_error. A frame has 65535 bytes at most.
    void send(const drivers::Bytes &bytes);

private:
    bool receiveExactly(std::uint8_t *out, std::size_t count);

    drivers::tray::FileDescriptor m_socket;
};

} // namespace tray_tool
