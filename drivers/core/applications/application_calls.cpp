#include "drivers/core/applications/application_calls.h"

#include "drivers/core/applications/pboc.h"
#include "drivers/core/applications/ssse.h"
#include "drivers/core/text_arguments.h"
#include "sdk/contracts.h"

#include <cstring>
#include <string>

namespace drivers {

namespace {

using MakeText = std::function<ReturnCode(CardChannel &, std::string &)>;

// Both PBOC calls behind their arguments.
ReturnCode givePbocText(const RunOnCard &run, const MakeText &make, char *result, std::uint16_t *length)
{
    return run([&](CardChannel &card) {
        std::string text;
        ReturnCode code = make(card, text);
        if (code == kSuccess)
            code = copyText(result, sdk::kPbocResultSize, text);
        if (code == kSuccess)
            *length = static_cast<std::uint16_t>(text.size());
        return code;
    });
}

ReturnCode giveRecord(const RunOnCard &run, const MakeText &read, char *record)
{
    if (record == nullptr)
        return kBadArgument;
    return run([&](CardChannel &card) {
        std::string text;
        const ReturnCode code = read(card, text);
        return code == kSuccess ? copyText(record, sdk::kSsseRecordSize, text) : code;
    });
}

} // namespace

ReturnCode callCardInfo(const RunOnCard &run, const char *aid, const char *tags, const std::uint8_t *interfaceUsed,
                        char *result, std::uint16_t *length)
{
    if (aid == nullptr || tags == nullptr || interfaceUsed == nullptr || result == nullptr || length == nullptr)
        return kBadArgument;
    const auto read = [&](CardChannel &card, std::string &text) { return readCardInfo(card, aid, tags, text); };
    return givePbocText(run, read, result, length);
}

ReturnCode callArqc(const RunOnCard &run, const char *aid, const char *transactionData, int transactionDataLength,
                    char *result, std::uint16_t *length)
{
    if (aid == nullptr || transactionData == nullptr || transactionDataLength < 0 || result == nullptr ||
        length == nullptr)
        return kBadArgument;
    const std::string data(transactionData, strnlen(transactionData, static_cast<std::size_t>(transactionDataLength)));
    const auto make = [&](CardChannel &card, std::string &text) { return makeArqc(card, aid, data, text); };
    return givePbocText(run, make, result, length);
}

ReturnCode callIssuerInfo(const RunOnCard &run, char *record)
{
    return giveRecord(run, readIssuerInfo, record);
}

ReturnCode callHolderInfo(const RunOnCard &run, char *record)
{
    return giveRecord(run, readHolderInfo, record);
}

} // namespace drivers
