#include "tools/panel/tray_watch.h"

#include "drivers/virtual/reader/card_models.h"
#include "tools/panel/card_picture.h"
#include "tools/panel/texts.h"

#include <exception>

namespace tray_panel {

using drivers::tray::Slot;
using drivers::tray::Tray;
using drivers::tray::TrayState;
using nlohmann::json;

namespace {

/// How late a change is seen at the latest. The watcher sees most at once, but neither a file that is changed in place
/// nor what happens on a network drive.
constexpr int kPollMs = 200;

QString plain(const std::string &text)
{
    return QString::fromStdString(text);
}

SlotView viewOf(const std::string &id, const json &card)
{
    SlotView view;
    view.card = id;
    view.title = cardTitle(card);
    view.picture = cardPicture(card);
    return view;
}

SlotView brokenView(const std::string &id, const std::string &reason)
{
    SlotView view;
    view.card = id;
    view.title = plain(reason);
    view.broken = true;
    view.picture = brokenCardPicture();
    return view;
}

} // namespace

TrayWatch::TrayWatch(std::filesystem::path folder, QObject *parent) : QObject(parent), m_folder(std::move(folder))
{
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &TrayWatch::refresh);
    connect(&m_timer, &QTimer::timeout, this, &TrayWatch::refresh);
    m_timer.start(kPollMs);
    refresh();
}

void TrayWatch::refresh()
{
    bool isNew = false;
    try {
        isNew = readTray();
        isNew = isNew || !m_view.error.isEmpty();
        m_view.error.clear();
    } catch (const std::exception &error) {
        const QString text = plain(error.what());
        isNew = text != m_view.error;
        m_view.error = text;
        m_state.reset();
    }
    watchFolders();
    if (isNew)
        emit changed();
}

bool TrayWatch::readTray()
{
    if (m_tray == nullptr)
        m_tray = std::make_unique<Tray>(m_folder);
    const auto state = m_tray->state();
    bool isNew = state != m_state;
    for (const Slot slot : drivers::tray::kAllSlots)
        isNew = readSlot(slot, *state) || isNew;
    if (state == m_state)
        return isNew;
    m_state = state;
    m_view.beeps = state->beeps;
    m_view.beepMs = state->beepMs;
    m_view.swipes = state->swipeCount;
    m_view.keyboardMode = state->keyboardMode;
    m_view.faults.clear();
    for (const drivers::tray::Fault &fault : state->faults)
        m_view.faults << faultText(fault);
    return true;
}

bool TrayWatch::readSlot(Slot slot, const TrayState &state)
{
    const std::string &card = state.at(slot).card;
    Lying &lying = m_lying[static_cast<std::size_t>(slot)];
    SlotView &view = m_view.contents[static_cast<std::size_t>(slot)];
    if (card.empty()) {
        const bool isNew = !view.card.empty();
        lying = {};
        view = {};
        return isNew;
    }
    if (lying.card == card && lying.file && !lying.file->changed())
        return false;
    if (lying.card != card || !lying.file) {
        lying.card = card;
        lying.file.emplace(m_tray->cardFile(card));
    }
    try {
        view = viewOf(card, Tray::readCard(*lying.file));
        return true;
    } catch (const std::exception &error) {
        // A file that is gone is tried at every turn.
        const bool known = view.broken && view.card == card && view.title == plain(error.what());
        if (!known)
            view = brokenView(card, error.what());
        return !known;
    }
}

void TrayWatch::watchFolders()
{
    // A folder that was removed and made anew has left the watcher's list.
    for (const auto &folder : {m_folder, m_folder / "cards"}) {
        const QString path = plain(folder.string());
        std::error_code ignored;
        if (!m_watcher.directories().contains(path) && std::filesystem::is_directory(folder, ignored))
            m_watcher.addPath(path);
    }
}

void TrayWatch::act(const std::function<void(Tray &)> &action)
{
    QString failure;
    try {
        if (m_tray == nullptr)
            m_tray = std::make_unique<Tray>(m_folder);
        action(*m_tray);
    } catch (const std::exception &error) {
        failure = plain(error.what());
    }
    refresh();
    emit done(failure);
}

std::vector<DeckCard> TrayWatch::fittingCards(Slot slot)
{
    std::vector<DeckCard> cards;
    act([&](Tray &tray) {
        for (const std::string &id : tray.cardIds()) {
            try {
                const json card = tray.card(id);
                if (drivers::tray::slotTakesKind(slot, card.at("kind").get<std::string>()))
                    cards.push_back({id, cardTitle(card)});
            } catch (const drivers::tray::TrayError &) {
                continue;
            }
        }
    });
    return cards;
}

void TrayWatch::put(Slot slot, const std::string &card)
{
    act([&](Tray &tray) { tray.put(slot, card); });
}

void TrayWatch::take(Slot slot)
{
    act([&](Tray &tray) { tray.update([&](TrayState &state) { state.take(slot); }); });
}

void TrayWatch::swipe()
{
    act([](Tray &tray) { drivers::reader::swipe(tray, tray.state()->at(Slot::Stripe).card); });
}

void TrayWatch::clearFaults()
{
    act([](Tray &tray) { tray.update([](TrayState &state) { state.faults.clear(); }); });
}

} // namespace tray_panel
