#include "drivers/virtual/reader/id_module.h"

#include "drivers/virtual/cards/id_pictures.h"

namespace drivers::reader {

using tray::Slot;
using tray::TrayError;

namespace {

/// Region and maker, date of manufacture, serial numbers, in the form in which modules show their number.
constexpr char kSamId[] = "05.01-20260101-0000012345-0000067890";

std::shared_ptr<const cards::IdCard> loadCard(const tray::Tray &tray, const std::string &id)
{
    const nlohmann::json description = tray.card(id);
    try {
        return std::make_shared<const cards::IdCard>(description);
    } catch (const std::exception &error) {
        throw TrayError(TrayError::Subject::Card, tray.cardFile(id).string() + ": " + error.what());
    }
}

} // namespace

ReturnCode IdModule::wait(std::uint32_t options, std::chrono::milliseconds timeout,
                          std::shared_ptr<const cards::IdCard> &card)
{
    const bool again = (options & kReadAgain) != 0;
    return m_connection.waitFor(timeout, [&]() -> std::optional<ReturnCode> {
        const tray::SlotContent content = m_connection.tray().state()->at(Slot::IdPlate);
        if (content.card.empty()) {
            if ((options & cards::kIdOptionComposite) != 0)
                cards::prepareIdPictures();
            return std::nullopt;
        }
        const std::lock_guard guard(m_mutex);
        if (again || m_lastRead == nullptr || m_inserted != content.inserted) {
            m_lastRead = loadCard(m_connection.tray(), content.card);
            m_inserted = content.inserted;
        }
        card = m_lastRead;
        return kSuccess;
    });
}

ReturnCode IdModule::read(std::uint32_t options, std::chrono::milliseconds timeout,
                          std::shared_ptr<const cards::IdCard> &card)
{
    const ReturnCode result = m_connection.reach(Feature::IdCard);
    return result == kSuccess ? wait(options, timeout, card) : result;
}

ReturnCode IdModule::find(std::chrono::milliseconds timeout, std::shared_ptr<const cards::IdCard> &card)
{
    const ReturnCode result = m_connection.reach(Feature::IdModule);
    return result == kSuccess ? wait(kReadAgain, timeout, card) : result;
}

ReturnCode IdModule::samId(std::string &text)
{
    const ReturnCode result = m_connection.reach(Feature::IdCard);
    if (result == kSuccess)
        text = kSamId;
    return result;
}

} // namespace drivers::reader
