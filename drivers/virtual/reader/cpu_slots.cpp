#include "drivers/virtual/reader/cpu_slots.h"

#include "drivers/core/t0_exchange.h"
#include "drivers/core/text_arguments.h"
#include "drivers/core/trace.h"
#include "drivers/virtual/reader/faults.h"
#include "sdk/contracts.h"

namespace drivers::reader {

using tray::Slot;
using tray::TrayState;

/// A powered card, whose every change is kept before its reply is shown.
class CpuSlots::Channel : public CardChannel {
public:
    Channel(tray::Tray &tray, Slot slot, HeldCard<cards::CpuCard> &card, const tray::FolderLock &held)
        : m_tray(tray), m_slot(slot), m_card(card), m_held(held)
    {
    }

    ReturnCode transmit(const Bytes &command, Bytes &reply) override
    {
        const auto once = [this](const Bytes &part, Bytes &answer) {
            if (losesCard(m_tray, m_held, m_slot))
                return kCardRemoved;
            answer = model().transmit(part);
            m_card.keep(m_held);
            return kSuccess;
        };
        const auto traced = [&once](const Bytes &part, Bytes &answer) { return tracedExchange(once, part, answer); };
        reply.clear();
        return model().protocol() == cards::Protocol::kT0 ? exchangeT0(traced, command, reply) : traced(command, reply);
    }

private:
    // The card as its file holds it; changed there, it is as just powered on.
    cards::CpuCard &model()
    {
        if (m_card.refresh())
            m_card.model().reset();
        return m_card.model();
    }

    tray::Tray &m_tray;
    Slot m_slot;
    HeldCard<cards::CpuCard> &m_card;
    const tray::FolderLock &m_held;
};

std::optional<Slot> CpuSlots::resolve(std::uint8_t slotCode, const TrayState &state) const
{
    if (!isSlotCode(slotCode))
        return std::nullopt;
    if (m_connection.entry().onlySlot)
        return m_connection.entry().onlySlot;
    switch (slotCode) {
    case sdk::kSlotContact:
        return Slot::Contact;
    case sdk::kSlotContactless:
        return Slot::Antenna;
    case sdk::kSlotPsam1:
        return Slot::Psam1;
    case sdk::kSlotPsam2:
        return Slot::Psam2;
    case sdk::kSlotPsam3:
        return Slot::Psam3;
    case sdk::kSlotPsam4:
        return Slot::Psam4;
    case sdk::kSlotAutomatic:
        break;
    default:
        return std::nullopt;
    }
    // A powered card stays the one meant until its removal has been reported.
    for (const Slot slot : {Slot::Contact, Slot::Antenna}) {
        if (m_powered.count(slot) != 0)
            return slot;
    }
    return state.at(Slot::Contact).card.empty() ? Slot::Antenna : Slot::Contact;
}

ReturnCode CpuSlots::checkPowered(Slot slot, const TrayState &state)
{
    const tray::SlotContent &content = state.at(slot);
    const auto powered = m_powered.find(slot);
    if (powered == m_powered.end())
        return content.card.empty() ? kNoCard : kNotPowered;
    if (powered->second.inserted != content.inserted) {
        m_powered.erase(powered);
        return kCardRemoved;
    }
    if (powered->second.powerCycles != state.powerCycles) {
        m_powered.erase(powered);
        return kNotPowered;
    }
    return kSuccess;
}

int CpuSlots::status(std::uint8_t slotCode)
{
    if (const ReturnCode result = m_connection.reach(Feature::CpuCard); result != kSuccess)
        return result;
    const std::lock_guard guard(m_mutex);
    const auto state = m_connection.tray().state();
    const std::optional<Slot> slot = resolve(slotCode, *state);
    if (!slot)
        return kBadArgument;
    if (checkPowered(*slot, *state) == kSuccess)
        return kCardPowered;
    return state->at(*slot).card.empty() ? kCardAbsent : kCardPresent;
}

std::optional<ReturnCode> CpuSlots::tryPowerOn(std::uint8_t slotCode, Bytes &atr)
{
    const std::lock_guard guard(m_mutex);
    tray::Tray &tray = m_connection.tray();
    const auto state = tray.state();
    const std::optional<Slot> slot = resolve(slotCode, *state);
    if (!slot)
        return kBadArgument;
    m_powered.erase(*slot);
    const tray::SlotContent &content = state->at(*slot);
    if (content.card.empty())
        return std::nullopt;
    if (tray.card(content.card).at("kind") != "cpu")
        return kCardError;
    PoweredCard powered{content.inserted, state->powerCycles, {tray, content.card}};
    powered.card.refresh();
    powered.card.model().reset();
    atr = powered.card.model().atr();
    m_powered.emplace(*slot, std::move(powered));
    return kSuccess;
}

ReturnCode CpuSlots::powerOn(std::uint8_t slotCode, std::chrono::milliseconds timeout, Bytes &atr)
{
    if (const ReturnCode result = m_connection.reach(Feature::CpuCard); result != kSuccess)
        return result;
    return m_connection.waitFor(timeout, [&] { return tryPowerOn(slotCode, atr); });
}

ReturnCode CpuSlots::powerOff(std::uint8_t slotCode)
{
    if (const ReturnCode result = m_connection.reach(Feature::CpuCard); result != kSuccess)
        return result;
    const std::lock_guard guard(m_mutex);
    const auto state = m_connection.tray().state();
    const std::optional<Slot> slot = resolve(slotCode, *state);
    if (!slot)
        return kBadArgument;
    const ReturnCode result = checkPowered(*slot, *state);
    m_powered.erase(*slot);
    return result == kNotPowered ? kSuccess : result;
}

ReturnCode CpuSlots::exchange(std::uint8_t slotCode, const Job &job)
{
    if (const ReturnCode result = m_connection.reach(Feature::CpuCard); result != kSuccess)
        return result;
    const std::lock_guard guard(m_mutex);
    return exchangeLocked(slotCode, job);
}

ReturnCode CpuSlots::exchangeLocked(std::uint8_t slotCode, const Job &job)
{
    const tray::FolderLock held = m_connection.tray().lock();
    const auto state = m_connection.tray().state();
    const std::optional<Slot> slot = resolve(slotCode, *state);
    if (!slot)
        return kBadArgument;
    if (const ReturnCode result = checkPowered(*slot, *state); result != kSuccess)
        return result;
    Channel channel(m_connection.tray(), *slot, m_powered.at(*slot).card, held);
    const ReturnCode result = job(channel);
    if (result == kCardRemoved)
        m_powered.erase(*slot);
    return result;
}

ReturnCode CpuSlots::runApplication(std::uint8_t slotCode, std::chrono::milliseconds timeout, const Job &job)
{
    if (status(slotCode) == kCardPowered)
        return exchange(slotCode, job);
    Bytes atr;
    if (const ReturnCode result = powerOn(slotCode, timeout, atr); result != kSuccess)
        return result;
    const ReturnCode result = exchange(slotCode, job);
    powerOff(slotCode);
    return result;
}

} // namespace drivers::reader
