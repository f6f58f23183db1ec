// A card for the virtual reader of vsmartcard-vpcd, which waits for its cards on TCP ports of 127.0.0.1.
#pragma once

#include "drivers/core/bytes.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <thread>

namespace testsupport {

using drivers::Bytes;

/// The ports of "Virtual PCD 00 00" and "Virtual PCD 00 01".
constexpr std::uint16_t kVpcdPort0 = 0x8C7B;
constexpr std::uint16_t kVpcdPort1 = 0x8C7C;

/// A card in the slot from construction to destruction. It answers from a thread of its own.
class VpcdCard {
public:
    /// Gives the reply to a command, SW1 SW2 included. Called in the card's thread.
    using Respond = std::function<Bytes(const Bytes &command)>;

    /// Puts the card in, waiting some seconds for the virtual reader to listen. Throws std::runtime_error if it never
    /// does. The reader's clients see the card up to 400 ms later.
    VpcdCard(Bytes atr, Respond respond, std::uint16_t port = kVpcdPort0);
    /// Pulls the card out.
    ~VpcdCard();
    VpcdCard(const VpcdCard &) = delete;
    VpcdCard &operator=(const VpcdCard &) = delete;

    /// How often the card was powered up or reset.
    int resets() const { return m_resets; }
    /// How often its power was cut.
    int powerOffs() const { return m_powerOffs; }
    /// Waits until the reader ends the connection.
    void wait();

private:
    void serve();
    bool receive(std::uint8_t *out, std::size_t size) const;
    bool send(const Bytes &message) const;
    void answer(const Bytes &message);

    const Bytes m_atr;
    const Respond m_respond;
    int m_socket;
    std::atomic<int> m_resets{0};
    std::atomic<int> m_powerOffs{0};
    std::thread m_thread;
};

/// A card program made of fixed replies. What it does not know it answers with 6D00.
class ScriptedReplies {
public:
    /// `command` and `reply` are hexadecimal; a command that ends in "*" stands for every command that begins so, and
    /// the longest one counts. Throws std::invalid_argument for other text.
    void add(std::string command, const std::string &reply);
    Bytes operator()(const Bytes &command) const;

private:
    std::map<std::string, Bytes> m_replies;
};

} // namespace testsupport
