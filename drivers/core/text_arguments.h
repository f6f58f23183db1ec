// Text that crosses the C boundary: into the caller's buffers and out of the caller's pointers.
#pragma once

#include "drivers/core/bytes.h"
#include "drivers/core/card_channel.h"
#include "drivers/core/return_codes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace drivers {

/// Copies `text` and a NUL into `out`, which holds `size` bytes. kBadArgument for a null `out`; kBufferTooSmall leaves
/// `out` as it was.
ReturnCode copyText(char *out, std::size_t size, std::string_view text);

/// The bytes of a caller's hexadecimal text of `length` characters; nothing behind them is read. Nothing for a null
/// pointer, a NUL before `length`, an odd length or another character.
std::optional<Bytes> hexArgument(const char *text, std::size_t length);

/// The bytes of a caller's hexadecimal text that has exactly the digits of `Array`, a std::array of bytes; otherwise
/// nothing.
template <class Array>
std::optional<Array> exactHexArgument(const char *text)
{
    constexpr std::size_t kDigits = 2 * std::tuple_size_v<Array>;
    if (text == nullptr || strnlen(text, kDigits + 1) != kDigits)
        return std::nullopt;
    const std::optional<Bytes> bytes = hexArgument(text, kDigits);
    if (!bytes)
        return std::nullopt;
    Array out{};
    std::copy(bytes->begin(), bytes->end(), out.begin());
    return out;
}

/// vek_icc_apdu over the card that `run` reaches: hexadecimal text in, hexadecimal text out into `reply`
/// (sdk::kApduReplySize bytes), its length without the NUL into `replyLength`. On any code but kSuccess both outputs
/// are left as they were. Null pointers and what cannot be an APDU are kBadArgument, and the card is not asked then.
ReturnCode exchangeApduText(const RunOnCard &run, const char *command, std::uint32_t commandLength, char *reply,
                            std::uint32_t *replyLength);

/// Whether `slot` is one of the slot codes of sdk/contracts.h.
bool isSlotCode(std::uint8_t slot);

/// The texts that vek_enum_devices hands out and vek_free_list takes back. What was never handed out, or was taken
/// back already, is ignored. Thread-safe.
class LentTexts {
public:
    /// A copy of `text` that stays valid until it is taken back or the library is unloaded.
    char *lend(std::string_view text);
    void takeBack(const char *text);

private:
    std::mutex m_mutex;
    std::vector<std::unique_ptr<char[]>> m_texts;
};

/// The form of vek_enum_devices' list: every name followed by "|".
template <class Names>
std::string joinNames(const Names &names)
{
    std::string list;
    for (const std::string &name : names) {
        list += name;
        list += '|';
    }
    return list;
}

} // namespace drivers
