// An opened PC/SC reader: what one handle of the driver stands for.
#pragma once

#include "drivers/core/applications/mifare.h"
#include "drivers/pcsc/pcsc_channel.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace drivers {

// The states of vek_probe_rf.
constexpr std::uint8_t kProbeNoCard = 0; ///< no card, as before
constexpr std::uint8_t kProbeCardStays = 1;
constexpr std::uint8_t kProbeCardLeft = 2;
constexpr std::uint8_t kProbeCardCame = 3; ///< also a card that was exchanged for another between two calls

// The card types of vek_probe_rf.
constexpr std::uint8_t kCardTypeNone = 0x00;
constexpr std::uint8_t kCardTypeProcessor = 0x01; ///< a card that takes APDUs
constexpr std::uint8_t kCardTypeStorage = 0x02;   ///< a contactless storage card, by the historical bytes of its ATR

/// Thread-safe: the calls on one reader run one after another. The daemon may be restarted between and during them; a
/// call that finds its connection dead makes a new one.
class PcscReader {
public:
    /// The reader of that name, or null if the daemon does not know it. A null name means the first reader with a
    /// card, else the first reader.
    static std::shared_ptr<PcscReader> open(const char *name);

    explicit PcscReader(std::string name);

    /// Powers the card on and gives its answer to reset; a card that is powered already is reset. Waits up to
    /// `timeout` for a card: kTimeout if none came. kCardBusy at once if another program holds the card exclusively.
    ReturnCode powerOn(std::chrono::milliseconds timeout, Bytes &atr);

    /// kSuccess too if the card had not been powered on; kNoCard without a card.
    ReturnCode powerOff();

    /// A CardStatus, or a negative code.
    int status();

    /// Compares the reader with what the call before found; the first call compares with an empty reader.
    ReturnCode probe(std::uint8_t &state, std::uint8_t &cardType);

    /// Runs `call(card)` without letting another thread's call in between. The card answers every command with kNoCard
    /// or kNotPowered when that is how things stand.
    template <class Call>
    ReturnCode withCard(Call &&call)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        Card card(*this);
        return std::forward<Call>(call)(static_cast<CardChannel &>(card));
    }

    /// Runs `job` on the card: on the powered one as it stands, else the card is waited for, powered on for the job and
    /// off after it. The code of that or of the job.
    ReturnCode runApplication(std::chrono::milliseconds timeout, const std::function<ReturnCode(CardChannel &)> &job);

    /// Waits for a Mifare Classic card and powers it on, again if it is powered already. kTimeout if no such card came.
    ReturnCode requestMifare(std::chrono::milliseconds timeout);

    /// withCard() with what is known of the reader's Mifare card: `call(session, card)`.
    template <class Call>
    ReturnCode withMifare(Call &&call)
    {
        return withCard([&](CardChannel &card) { return std::forward<Call>(call)(m_mifare, card); });
    }

    /// Ends a call that waits in another thread, powers the card off and leaves the daemon. Every later call is
    /// refused with kBadHandle.
    void close();

private:
    class Card : public CardChannel {
    public:
        explicit Card(PcscReader &reader) : m_reader(reader) {}
        ReturnCode transmit(const Bytes &command, Bytes &reply) override;

    private:
        PcscReader &m_reader;
    };

    ReturnCode requireCard();
    ReturnCode currentState(SCARD_READERSTATE &state);
    ReturnCode waitForCard(std::chrono::steady_clock::time_point deadline);
    ReturnCode establish();
    void loseService();

    const std::string m_name;
    std::mutex m_mutex;
    std::atomic<bool> m_closed{false};
    PcscContext m_context;
    PcscChannel m_channel;
    MifareSession m_mifare;
    bool m_probeFoundCard = false;
    DWORD m_probeEvents = 0;
};

} // namespace drivers
