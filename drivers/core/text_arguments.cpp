#include "drivers/core/text_arguments.h"

#include "drivers/core/command_apdu.h"
#include "sdk/contracts.h"

#include <cstring>

namespace drivers {

ReturnCode copyText(char *out, std::size_t size, std::string_view text)
{
    if (out == nullptr)
        return kBadArgument;
    if (text.size() >= size)
        return kBufferTooSmall;
    text.copy(out, text.size());
    out[text.size()] = '\0';
    return kSuccess;
}

std::optional<Bytes> hexArgument(const char *text, std::size_t length)
{
    if (text == nullptr || strnlen(text, length) != length)
        return std::nullopt;
    return fromHex({text, length});
}

ReturnCode exchangeApduText(const RunOnCard &run, const char *command, std::uint32_t commandLength, char *reply,
                            std::uint32_t *replyLength)
{
    const std::optional<Bytes> bytes = hexArgument(command, commandLength);
    if (!bytes || bytes->size() < kApduHeaderSize || bytes->size() > kApduMaxSize)
        return kBadArgument;
    if (reply == nullptr || replyLength == nullptr)
        return kBadArgument;

    Bytes answer;
    ReturnCode result = run([&](CardChannel &card) { return card.transmit(*bytes, answer); });
    if (result == kSuccess)
        result = copyText(reply, sdk::kApduReplySize, toHex(answer));
    if (result == kSuccess)
        *replyLength = static_cast<std::uint32_t>(answer.size() * 2);
    return result;
}

bool isSlotCode(std::uint8_t slot)
{
    switch (slot) {
    case sdk::kSlotContact:
    case sdk::kSlotAutomatic:
    case sdk::kSlotPsam1:
    case sdk::kSlotPsam2:
    case sdk::kSlotPsam3:
    case sdk::kSlotPsam4:
    case sdk::kSlotContactless:
        return true;
    default:
        return false;
    }
}

char *LentTexts::lend(std::string_view text)
{
    auto copy = std::make_unique<char[]>(text.size() + 1);
    text.copy(copy.get(), text.size());
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_texts.emplace_back(std::move(copy)).get();
}

void LentTexts::takeBack(const char *text)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (auto lent = m_texts.begin(); lent != m_texts.end(); ++lent) {
        if (lent->get() == text) {
            m_texts.erase(lent);
            return;
        }
    }
}

} // namespace drivers
