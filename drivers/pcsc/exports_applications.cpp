// Calls that speak to a CPU card's application: PBOC and social security. Every slot code addresses the opened reader.
#include "drivers/core/abi.h"
#include "drivers/core/applications/application_calls.h"
#include "drivers/core/boundary.h"
#include "drivers/core/text_arguments.h"
#include "drivers/core/wait_time.h"
#include "drivers/pcsc/open_readers.h"

using namespace drivers;

namespace {

// Runs `call(run)`, `run` being the way to the reader's card.
template <class Call>
int onCard(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, const Call &call) noexcept
{
    return withDevice(openReaders(), handle, [&](PcscReader &reader) {
        return call([&](const CardJob &job) {
            return isSlotCode(slot) ? reader.runApplication(waitTime(timeoutMs), job) : kBadArgument;
        });
    });
}

} // namespace

int vek_pboc_get_card_info(sdk::DeviceHandle handle, std::uint8_t slot, std::uint16_t timeoutMs, const char *aid,
                           const char *tags, std::uint8_t *interfaceUsed, char *result, std::uint16_t *length,
                           std::uint8_t /*flag*/)
{
    return onCard(handle, slot, timeoutMs,
                  [&](const RunOnCard &run) { return callCardInfo(run, aid, tags, interfaceUsed, result, length); });
}

int vek_pboc_get_arqc(sdk::DeviceHandle handle, std::uint8_t slot, std::uint16_t timeoutMs, const char *aid,
                      int /*constant*/, const char *transactionData, int transactionDataLength, char *result,
                      std::uint16_t *length, std::uint8_t /*flag*/)
{
    return onCard(handle, slot, timeoutMs, [&](const RunOnCard &run) {
        return callArqc(run, aid, transactionData, transactionDataLength, result, length);
    });
}

int vek_ssse_get_issuer_info(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, char *record,
                             int /*constant*/)
{
    return onCard(handle, slot, timeoutMs, [&](const RunOnCard &run) { return callIssuerInfo(run, record); });
}

int vek_ssse_get_user_info(sdk::DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, char *record,
                           int /*constant*/)
{
    return onCard(handle, slot, timeoutMs, [&](const RunOnCard &run) { return callHolderInfo(run, record); });
}
