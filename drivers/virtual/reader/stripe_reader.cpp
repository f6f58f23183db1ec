#include "drivers/virtual/reader/stripe_reader.h"

#include "drivers/virtual/cards/stripe_card.h"
#include "drivers/virtual/reader/held_card.h"

namespace drivers::reader {

using tray::Swipe;
using tray::TrayState;

namespace {

constexpr int kKeyboardMode = 0;
constexpr int kCommandMode = 1;

/// What a session that began when `start` swipes were counted has seen: the first swipe with data, else the first
/// one at all.
std::optional<Swipe> swipeAfter(const TrayState &state, std::uint64_t start)
{
    // A count behind the session's: the tray was laid out anew meanwhile.
    const std::uint64_t from = state.swipeCount < start ? 0 : start;
    std::optional<Swipe> found;
    for (const Swipe &swipe : state.swipes) {
        if (swipe.number <= from)
            continue;
        if (!found)
            found = swipe;
        if (!swipe.empty())
            return swipe;
    }
    return found;
}

/// Whether a stripe can hold what is to be written.
bool canWrite(int selection, const Tracks &tracks)
{
    cards::StripeCard blank({{"kind", "stripe"}, {"tracks", nlohmann::json::object()}});
    return blank.write(selection, tracks) == cards::StripeResult::ok;
}

} // namespace

ReturnCode StripeReader::setMode(int mode)
{
    if (mode != kKeyboardMode && mode != kCommandMode)
        return kBadArgument;
    const ReturnCode result = m_connection.reach(Feature::Stripe);
    if (result == kSuccess)
        m_connection.tray().update([mode](TrayState &state) { state.keyboardMode = mode == kKeyboardMode; });
    return result;
}

ReturnCode StripeReader::start()
{
    const ReturnCode result = m_connection.reach(Feature::Stripe);
    if (result != kSuccess)
        return result;
    const std::lock_guard guard(m_mutex);
    m_sessionStart = m_connection.tray().state()->swipeCount;
    return kSuccess;
}

std::optional<Swipe> StripeReader::sessionSwipe()
{
    const std::lock_guard guard(m_mutex);
    return m_sessionStart ? swipeAfter(*m_connection.tray().state(), *m_sessionStart) : std::nullopt;
}

int StripeReader::status()
{
    if (const ReturnCode result = m_connection.reach(Feature::Stripe); result != kSuccess)
        return result;
    const std::optional<Swipe> swipe = sessionSwipe();
    if (!swipe)
        return kNothingYet;
    return swipe->empty() ? kSwipedEmpty : kSwiped;
}

ReturnCode StripeReader::get(Tracks &tracks)
{
    if (const ReturnCode result = m_connection.reach(Feature::Stripe); result != kSuccess)
        return result;
    const std::optional<Swipe> swipe = sessionSwipe();
    if (!swipe)
        return kNoCard;
    tracks = swipe->tracks;
    return kSuccess;
}

ReturnCode StripeReader::stop()
{
    const ReturnCode result = m_connection.reach(Feature::Stripe);
    const std::lock_guard guard(m_mutex);
    m_sessionStart.reset();
    return result;
}

ReturnCode StripeReader::write(int selection, const Tracks &tracks, std::chrono::milliseconds timeout)
{
    if (!canWrite(selection, tracks))
        return kBadArgument;
    if (const ReturnCode result = m_connection.reach(Feature::Stripe); result != kSuccess)
        return result;
    tray::Tray &tray = m_connection.tray();
    const std::uint64_t start = tray.state()->swipeCount;
    return m_connection.waitFor(timeout, [&]() -> std::optional<ReturnCode> {
        const std::optional<Swipe> swipe = swipeAfter(*tray.state(), start);
        if (!swipe)
            return std::nullopt;
        const tray::FolderLock held = tray.lock();
        HeldCard<cards::StripeCard> card(tray, swipe->card);
        card.refresh();
        if (card.model().write(selection, tracks) != cards::StripeResult::ok)
            return kCardError;
        card.keep(held);
        return kSuccess;
    });
}

} // namespace drivers::reader
