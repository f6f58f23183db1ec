// The calls of the resident ID card module.
#include "drivers/core/abi.h"
#include "drivers/virtual/exports/library.h"
#include "drivers/virtual/reader/id_pictures_output.h"

#include <algorithm>

using namespace drivers;
using cards::IdCard;
using exports::library;
using exports::serve;

namespace {

/// The calls that read one text off the card. A card that does not carry it is kCardError.
int readText(sdk::DeviceHandle handle, std::uint32_t timeoutMs, char *text, std::size_t size,
             const std::string &(IdCard::*member)() const)
{
    return serve(handle, [&](reader::Device &device) {
        if (text == nullptr)
            return kBadArgument;
        std::shared_ptr<const IdCard> card;
        if (const ReturnCode result = device.id.find(waitTime(timeoutMs), card); result != kSuccess)
            return result;
        const std::string &found = (*card.*member)();
        return found.empty() ? kCardError : copyText(text, size, found);
    });
}

/// A separator must keep the text UTF-8 on one line.
bool canSeparate(char separator)
{
    return separator >= 0x20 && separator != 0x7F && static_cast<unsigned char>(separator) < 0x80;
}

} // namespace

int vek_idcr_getinfo(sdk::DeviceHandle handle, std::uint32_t flags, std::uint32_t timeoutMs, int, char *info,
                     char *extra, const char *photoPath, const char *frontPath, const char *backPath)
{
    return serve(handle, [&](reader::Device &device) {
        const reader::PicturePaths paths = {photoPath, frontPath, backPath};
        if (info == nullptr || extra == nullptr || !reader::canWritePictures(flags, paths))
            return kBadArgument;
        std::shared_ptr<const IdCard> card;
        ReturnCode result = device.id.read(flags, waitTime(timeoutMs), card);
        if (result == kSuccess)
            result = reader::writePictures(*card, flags, paths);
        if (result == kSuccess)
            result = copyText(info, sdk::kIdInfoSize, card->info(flags, library().separator));
        return result == kSuccess ? copyText(extra, sdk::kIdExtraSize, card->extra(flags)) : result;
    });
}

int vek_idcr_read_samid(sdk::DeviceHandle handle, std::uint32_t, char *text)
{
    return serve(handle, [&](reader::Device &device) {
        std::string number;
        const ReturnCode result = device.id.samId(number);
        return result == kSuccess ? copyText(text, sdk::kSamIdSize, number) : result;
    });
}

int vek_idcr_read_uid(sdk::DeviceHandle handle, std::uint32_t timeoutMs, char *text)
{
    return readText(handle, timeoutMs, text, sdk::kIdUidSize, &IdCard::uid);
}

int vek_idcr_read_dn(sdk::DeviceHandle handle, std::uint32_t timeoutMs, char *text)
{
    return readText(handle, timeoutMs, text, sdk::kIdDnSize, &IdCard::dn);
}

int vek_idcr_read_emid(sdk::DeviceHandle handle, std::uint32_t timeoutMs, char *text)
{
    return readText(handle, timeoutMs, text, sdk::kIdEmidSize, &IdCard::emid);
}

int vek_idcr_transive(sdk::DeviceHandle handle, std::uint32_t timeoutMs, std::uint8_t byte1, std::uint8_t byte2,
                      std::uint32_t *statusWord, std::uint8_t *data, int capacity, std::int32_t *length)
{
    return serve(handle, [&](reader::Device &device) {
        if (statusWord == nullptr || length == nullptr || capacity < 0 || (data == nullptr && capacity > 0))
            return kBadArgument;
        std::shared_ptr<const IdCard> card;
        if (const ReturnCode result = device.id.find(waitTime(timeoutMs), card); result != kSuccess)
            return result;
        const cards::ModuleReply reply = card->moduleReply(byte1, byte2);
        if (reply.data.size() > static_cast<std::size_t>(capacity))
            return kBufferTooSmall;
        std::copy(reply.data.begin(), reply.data.end(), data);
        *statusWord = reply.statusWord;
        *length = static_cast<std::int32_t>(reply.data.size());
        return kSuccess;
    });
}

int vek_idcr_set_separation(char separator)
{
    return guarded([separator] {
        if (!canSeparate(separator))
            return kBadArgument;
        library().separator = separator;
        return kSuccess;
    });
}
