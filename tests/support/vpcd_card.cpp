#include "tests/support/vpcd_card.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <stdexcept>

namespace testsupport {

namespace {

constexpr std::uint8_t kPowerOff = 0x00;
constexpr std::uint8_t kPowerOn = 0x01;
constexpr std::uint8_t kReset = 0x02;
constexpr std::uint8_t kGetAtr = 0x04;

int connectOnce(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connection >= 0 && connect(connection, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0)
        return connection;
    if (connection >= 0)
        close(connection);
    return -1;
}

int connectToReader(std::uint16_t port)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    for (;;) {
        const int connection = connectOnce(port);
        if (connection >= 0)
            return connection;
        if (std::chrono::steady_clock::now() > deadline)
            throw std::runtime_error("no virtual reader listens on 127.0.0.1:" + std::to_string(port) +
                                     "; is pcscd running with vsmartcard-vpcd?");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

} // namespace

VpcdCard::VpcdCard(Bytes atr, Respond respond, std::uint16_t port)
    : m_atr(std::move(atr)), m_respond(std::move(respond)), m_socket(connectToReader(port)),
      m_thread([this] { serve(); })
{
}

VpcdCard::~VpcdCard()
{
    shutdown(m_socket, SHUT_RDWR);
    wait();
    close(m_socket);
}

void VpcdCard::wait()
{
    if (m_thread.joinable())
        m_thread.join();
}

void VpcdCard::serve()
{
    std::uint8_t size[2];
    while (receive(size, sizeof size)) {
        Bytes message(std::size_t{size[0]} * 256 + size[1]);
        if (message.empty() || !receive(message.data(), message.size()))
            return;
        answer(message);
    }
}

// The reader sends a length and then its message, and the kernel holds the message back until the length has been
// acknowledged, which this end would do 40 ms later. Quick acknowledgement has to be asked for again every time.
bool VpcdCard::receive(std::uint8_t *out, std::size_t size) const
{
    while (size > 0) {
        const int on = 1;
        setsockopt(m_socket, IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
        const ssize_t got = recv(m_socket, out, size, 0);
        if (got <= 0)
            return false;
        out += got;
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

bool VpcdCard::send(const Bytes &message) const
{
    Bytes frame = {static_cast<std::uint8_t>(message.size() >> 8U), static_cast<std::uint8_t>(message.size() & 0xFFU)};
    frame.insert(frame.end(), message.begin(), message.end());
    std::size_t sent = 0;
    while (sent < frame.size()) {
        const ssize_t now = ::send(m_socket, frame.data() + sent, frame.size() - sent, MSG_NOSIGNAL);
        if (now <= 0)
            return false;
        sent += static_cast<std::size_t>(now);
    }
    return true;
}

void VpcdCard::answer(const Bytes &message)
{
    if (message.size() > 1) {
        send(m_respond(message));
        return;
    }
    switch (message[0]) {
    case kPowerOff:
        ++m_powerOffs;
        break;
    case kPowerOn:
    case kReset:
        ++m_resets;
        break;
    case kGetAtr:
        send(m_atr);
        break;
    default:
        break;
    }
}

void ScriptedReplies::add(std::string command, const std::string &reply)
{
    const std::optional<Bytes> bytes = drivers::fromHex(reply);
    const bool prefix = !command.empty() && command.back() == '*';
    if (prefix)
        command.pop_back();
    const std::optional<Bytes> pattern = drivers::fromHex(command);
    if (!bytes || !pattern)
        throw std::invalid_argument("not hexadecimal: " + command + "=" + reply);
    m_replies[drivers::toHex(*pattern) + (prefix ? "*" : "")] = *bytes;
}

Bytes ScriptedReplies::operator()(const Bytes &command) const
{
    std::string text = drivers::toHex(command);
    const auto exact = m_replies.find(text);
    if (exact != m_replies.end())
        return exact->second;
    for (;;) {
        const auto found = m_replies.find(text + "*");
        if (found != m_replies.end())
            return found->second;
        if (text.empty())
            return {0x6D, 0x00};
        text.resize(text.size() - 2);
    }
}

} // namespace testsupport
