#include "drivers/virtual/reader/mifare_field.h"

#include "drivers/virtual/reader/faults.h"

namespace drivers::reader {

using cards::MifareCard;
using cards::MifareResult;
using tray::Slot;

namespace {

ReturnCode codeOf(MifareResult result)
{
    switch (result) {
    case MifareResult::ok:
        return kSuccess;
    case MifareResult::badArgument:
        return kBadArgument;
    case MifareResult::authenticationFailed:
    case MifareResult::notAuthenticated:
        return kAuthenticationFailed;
    case MifareResult::accessDenied:
        return kAccessDenied;
    case MifareResult::notAValueBlock:
    case MifareResult::overflow:
        break;
    }
    return kCardError;
}

} // namespace

std::optional<ReturnCode> MifareField::trySelect()
{
    tray::Tray &tray = m_connection.tray();
    const auto state = tray.state();
    const tray::SlotContent &content = state->at(Slot::Antenna);
    m_selected.reset();
    if (content.card.empty() || tray.card(content.card).at("kind") != "mifare")
        return std::nullopt;
    m_selected.emplace(SelectedCard{content.inserted, state->powerCycles, {tray, content.card}, std::nullopt});
    m_selected->card.refresh();
    m_selected->card.model().select();
    return kSuccess;
}

ReturnCode MifareField::checkSelected()
{
    const auto state = m_connection.tray().state();
    const tray::SlotContent &content = state->at(Slot::Antenna);
    if (!m_selected)
        return content.card.empty() ? kNoCard : kAuthenticationFailed;
    if (m_selected->inserted != content.inserted) {
        m_selected.reset();
        return kCardRemoved;
    }
    if (m_selected->powerCycles != state->powerCycles) {
        m_selected.reset();
        return kAuthenticationFailed;
    }
    return kSuccess;
}

/// A card that another program wrote keeps this device's authentication, as long as the key still opens the sector.
void MifareField::refresh()
{
    if (!m_selected->card.refresh() || !m_selected->authentication)
        return;
    const Authentication &known = *m_selected->authentication;
    if (m_selected->card.model().authenticate(known.sector, known.keyType, known.key) != MifareResult::ok)
        m_selected->authentication.reset();
}

ReturnCode MifareField::perform(const tray::FolderLock &held, const Command &command)
{
    if (losesCard(m_connection.tray(), held, Slot::Antenna)) {
        m_selected.reset();
        return kCardRemoved;
    }
    refresh();
    const MifareResult result = command(m_selected->card.model());
    if (result != MifareResult::ok)
        m_selected->authentication.reset();
    m_selected->card.keep(held);
    return codeOf(result);
}

ReturnCode MifareField::request(std::chrono::milliseconds timeout, std::string &type, std::string &uid)
{
    if (const ReturnCode result = m_connection.reach(Feature::Antenna); result != kSuccess)
        return result;
    return m_connection.waitFor(timeout, [&]() -> std::optional<ReturnCode> {
        const std::lock_guard guard(m_mutex);
        const std::optional<ReturnCode> result = trySelect();
        if (result == kSuccess) {
            type = std::string(1, m_selected->card.model().type());
            uid = m_selected->card.model().uid();
        }
        return result;
    });
}

ReturnCode MifareField::authenticate(int sector, char keyType, const SectorKey &key)
{
    if (const ReturnCode result = m_connection.reach(Feature::Antenna); result != kSuccess)
        return result;
    const std::lock_guard guard(m_mutex);
    const tray::FolderLock held = m_connection.tray().lock();
    if (m_selected) {
        if (const ReturnCode result = checkSelected(); result == kCardRemoved)
            return result;
    }
    if (!m_selected && !trySelect())
        return kNoCard;
    const ReturnCode result = perform(held, [&](MifareCard &card) { return card.authenticate(sector, keyType, key); });
    if (result == kSuccess)
        m_selected->authentication = {sector, keyType, key};
    return result;
}

ReturnCode MifareField::run(const Command &command)
{
    if (const ReturnCode result = m_connection.reach(Feature::Antenna); result != kSuccess)
        return result;
    const std::lock_guard guard(m_mutex);
    // Before the look at the antenna: a card that is out of it must not be written to.
    const tray::FolderLock held = m_connection.tray().lock();
    if (const ReturnCode result = checkSelected(); result != kSuccess)
        return result;
    return perform(held, command);
}

ReturnCode FieldProbe::probe(std::uint8_t &state, std::uint8_t &cardType)
{
    if (const ReturnCode result = m_connection.reach(Feature::Antenna); result != kSuccess)
        return result;
    const std::lock_guard guard(m_mutex);
    tray::Tray &tray = m_connection.tray();
    const tray::SlotContent content = tray.state()->at(Slot::Antenna);
    cardType = kNoType;
    if (!content.card.empty())
        cardType = tray.card(content.card).at("kind") == "mifare" ? kMifareType : kCpuType;
    if (content.inserted == m_seen)
        state = kNothingNew;
    else
        state = content.card.empty() ? kLeft : kCame;
    m_seen = content.inserted;
    return kSuccess;
}

} // namespace drivers::reader
