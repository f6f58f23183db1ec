#include "tools/tray/vpcd_link.h"

#include <array>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <system_error>

namespace tray_tool {

namespace {

[[noreturn]] void fail(const std::string &what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

} // namespace

VpcdLink::VpcdLink(std::uint16_t port) : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // NOLINTNEXTLINE(*-reinterpret-cast): the socket interface's own way of passing addresses
    if (!m_socket || ::connect(m_socket.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        fail("no virtual reader of pcscd answers at 127.0.0.1:" + std::to_string(port));
}

bool VpcdLink::receiveExactly(std::uint8_t *out, std::size_t count)
{
    std::size_t got = 0;
    while (got < count) {
        // Without this the acknowledgement is delayed, the other side holds its next packet back for it, and every
        // exchange costs 40 ms. The kernel forgets it, so it is set before each receive.
        const int on = 1;
        ::setsockopt(m_socket.get(), IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
        const ssize_t part = ::recv(m_socket.get(), out + got, count - got, 0);
        if (part == 0)
            return false;
        if (part > 0)
            got += static_cast<std::size_t>(part);
        else if (errno != EINTR)
            fail("connection to pcscd");
    }
    return true;
}

std::optional<drivers::Bytes> VpcdLink::receive()
{
    std::array<std::uint8_t, 2> length{};
    if (!receiveExactly(length.data(), length.size()))
        return std::nullopt;
    drivers::Bytes frame(static_cast<std::size_t>(length[0] << 8U | length[1]));
    if (!receiveExactly(frame.data(), frame.size()))
        return std::nullopt;
    return frame;
}

void VpcdLink::send(const drivers::Bytes &bytes)
{
    if (bytes.size() > 0xFFFF)
        throw std::length_error("a reply of the card is too long for the virtual reader");
    drivers::Bytes frame = {static_cast<std::uint8_t>(bytes.size() >> 8U), static_cast<std::uint8_t>(bytes.size())};
    frame.insert(frame.end(), bytes.begin(), bytes.end());
    std::size_t sent = 0;
    while (sent < frame.size()) {
        const ssize_t part = ::send(m_socket.get(), frame.data() + sent, frame.size() - sent, MSG_NOSIGNAL);
        if (part > 0)
            sent += static_cast<std::size_t>(part);
        else if (errno != EINTR)
            fail("connection to pcscd");
    }
}

} // namespace tray_tool
