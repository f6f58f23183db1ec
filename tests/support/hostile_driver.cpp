// A driver library that is hostile by design (tests/support/hostility.h): whatever the contracts leave to a driver it
// does wrong at some seed. It keeps to one rule: it writes no byte outside the buffers' sizes.
#include "drivers/core/abi.h"
#include "tests/support/hostility.h"
#include "tests/support/spite.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

UNIFOLD_EXPORT Hostility *unifold_test_hostility()
{
    return &Spite::control();
}

namespace {

/// Input texts are read to their ends, so that a text without one is found.
void read(std::initializer_list<const char *> texts)
{
    for (const char *text : texts)
        Spite::control().inputBytes += std::strlen(text);
}

int resultOf(const char *entryPoint)
{
    return Spite(entryPoint).result();
}

int textCall(const char *entryPoint, char *text, std::size_t size)
{
    Spite spite(entryPoint);
    spite.fill(text, size);
    return spite.result();
}

} // namespace

int vek_enum_devices(int /*transport*/, char **list)
{
    Spite spite("vek_enum_devices");
    if (spite.below(4) != 0) {
        const std::string text = spite.deviceList();
        auto owned = std::make_unique<char[]>(text.size() + 1);
        std::memcpy(owned.get(), text.c_str(), text.size() + 1);
        *list = owned.get();
        Spite::control().lists.push_back(std::move(owned));
    }
    return spite.oneOf<int, 6>({1, 2, 1000, 0, -1, std::numeric_limits<int>::max()});
}

void vek_free_list(char *list)
{
    auto &lists = Spite::control().lists;
    const auto found = std::find_if(lists.begin(), lists.end(), [list](const auto &own) { return own.get() == list; });
    if (found != lists.end()) {
        lists.erase(found);
    } else if (list != nullptr) {
        std::fputs("a list was given back that the driver never made\n", stderr);
        std::abort();
    }
}

std::intptr_t vek_open(const char *device, std::intptr_t /*reserved*/, int /*baud*/)
{
    if (device != nullptr)
        read({device});
    return Spite("vek_open")
        .oneOf<std::intptr_t, 6>(
            {1, -1, 0x1A2B, std::numeric_limits<std::intptr_t>::min(), std::numeric_limits<std::intptr_t>::max(), 0});
}

int vek_close(sdk::DeviceHandle /*device*/, int /*reserved*/)
{
    return resultOf("vek_close");
}

int vek_set_baud(sdk::DeviceHandle /*device*/, int /*baud*/, std::uint8_t /*mode*/)
{
    return resultOf("vek_set_baud");
}

int vek_firm_version(sdk::DeviceHandle /*device*/, char *version, std::uint32_t *length)
{
    Spite spite("vek_firm_version");
    spite.fill(version, sdk::kFirmVersionSize);
    spite.write(length);
    return spite.result();
}

int vek_beep(sdk::DeviceHandle /*device*/, int /*onTime*/, int /*offTime*/, int /*times*/)
{
    return resultOf("vek_beep");
}

int vek_msr_mode_switch(sdk::DeviceHandle /*device*/, int /*mode*/)
{
    return resultOf("vek_msr_mode_switch");
}

int vek_msr_qm_start(sdk::DeviceHandle /*device*/)
{
    return resultOf("vek_msr_qm_start");
}

int vek_msr_qm_status(sdk::DeviceHandle /*device*/)
{
    return Spite("vek_msr_qm_status").oneOf<int, 6>({1, 1, 9, 0, -1, std::numeric_limits<int>::min()});
}

int vek_msr_qm_get(sdk::DeviceHandle /*device*/, char *track1, char *track2, char *track3, int *length1, int *length2,
                   int *length3)
{
    Spite spite("vek_msr_qm_get");
    for (char *track : {track1, track2, track3})
        spite.fill(track, sdk::kTrackSize);
    for (int *length : {length1, length2, length3})
        spite.write(length);
    return spite.result();
}

int vek_msr_qm_stop(sdk::DeviceHandle /*device*/)
{
    return resultOf("vek_msr_qm_stop");
}

int vek_msr_write(sdk::DeviceHandle /*device*/, int /*selection*/, int /*reserved*/, const char *track1,
                  const char *track2, const char *track3, int /*timeoutMs*/)
{
    read({track1, track2, track3});
    return resultOf("vek_msr_write");
}

int vek_icc_poweron(sdk::DeviceHandle /*device*/, std::uint8_t /*slot*/, std::uint32_t /*timeoutMs*/, char *atr,
                    std::uint32_t *length)
{
    Spite spite("vek_icc_poweron");
    spite.fill(atr, sdk::kAtrSize);
    spite.write(length);
    return spite.result();
}

int vek_icc_poweroff(sdk::DeviceHandle /*device*/, std::uint8_t /*slot*/, std::uint32_t /*timeoutMs*/)
{
    return resultOf("vek_icc_poweroff");
}

int vek_icc_status(sdk::DeviceHandle /*device*/, std::uint8_t /*slot*/)
{
    return resultOf("vek_icc_status");
}

int vek_icc_apdu(sdk::DeviceHandle /*device*/, std::uint8_t /*slot*/, const char *command,
                 std::uint32_t /*commandLength*/, char *reply, std::uint32_t *replyLength)
{
    read({command});
    Spite spite("vek_icc_apdu");
    spite.fill(reply, sdk::kApduReplySize);
    spite.write(replyLength);
    return spite.result();
}

int vek_probe_rf(sdk::DeviceHandle /*device*/, std::uint8_t *state, std::uint8_t *cardType)
{
    Spite spite("vek_probe_rf");
    spite.write(state);
    spite.write(cardType);
    return spite.result();
}

int vek_pboc_get_card_info(sdk::DeviceHandle /*device*/, std::uint8_t /*slot*/, std::uint16_t /*timeoutMs*/,
                           const char *aid, const char *tags, std::uint8_t *interfaceUsed, char *result,
                           std::uint16_t *length, std::uint8_t /*flag*/)
{
    read({aid, tags});
    Spite spite("vek_pboc_get_card_info");
    spite.write(interfaceUsed);
    spite.fill(result, sdk::kPbocResultSize);
    spite.write(length);
    return spite.result();
}

int vek_pboc_get_arqc(sdk::DeviceHandle /*device*/, std::uint8_t /*slot*/, std::uint16_t /*timeoutMs*/, const char *aid,
                      int /*constant*/, const char *transactionData, int /*transactionDataLength*/, char *result,
                      std::uint16_t *length, std::uint8_t /*flag*/)
{
    read({aid, transactionData});
    Spite spite("vek_pboc_get_arqc");
    spite.fill(result, sdk::kPbocResultSize);
    spite.write(length);
    return spite.result();
}

int vek_idcr_getinfo(sdk::DeviceHandle /*device*/, std::uint32_t /*flags*/, std::uint32_t /*timeoutMs*/,
                     int /*constant*/, char *info, char *extra, const char *photoPath, const char *frontPath,
                     const char *backPath)
{
    Spite spite("vek_idcr_getinfo");
    spite.fill(info, sdk::kIdInfoSize, spite.oneOf<const char *, 6>({"I|", "A|", "J|", "Y|", "z|", ""}));
    spite.fill(extra, sdk::kIdExtraSize);
    for (const char *path : {photoPath, frontPath, backPath})
        spite.leavePicture(path);
    return spite.result();
}

int vek_idcr_read_samid(sdk::DeviceHandle /*device*/, std::uint32_t /*timeoutMs*/, char *text)
{
    return textCall("vek_idcr_read_samid", text, sdk::kSamIdSize);
}

int vek_idcr_read_uid(sdk::DeviceHandle /*device*/, std::uint32_t /*timeoutMs*/, char *text)
{
    return textCall("vek_idcr_read_uid", text, sdk::kIdUidSize);
}

int vek_idcr_read_dn(sdk::DeviceHandle /*device*/, std::uint32_t /*timeoutMs*/, char *text)
{
    return textCall("vek_idcr_read_dn", text, sdk::kIdDnSize);
}

int vek_idcr_read_emid(sdk::DeviceHandle /*device*/, std::uint32_t /*timeoutMs*/, char *text)
{
    return textCall("vek_idcr_read_emid", text, sdk::kIdEmidSize);
}

int vek_idcr_transive(sdk::DeviceHandle /*device*/, std::uint32_t /*timeoutMs*/, std::uint8_t /*byte1*/,
                      std::uint8_t /*byte2*/, std::uint32_t *statusWord, std::uint8_t *data, int capacity,
                      std::int32_t *length)
{
    Spite spite("vek_idcr_transive");
    spite.write(statusWord);
    for (int i = 0; i < capacity; ++i)
        data[i] = static_cast<std::uint8_t>(spite.below(256));
    spite.write(length);
    return spite.result();
}

int vek_idcr_set_separation(char /*separator*/)
{
    return resultOf("vek_idcr_set_separation");
}

int vek_mifare_request(sdk::DeviceHandle /*device*/, int /*timeoutMs*/, char *type, char *uid)
{
    Spite spite("vek_mifare_request");
    spite.fill(type, sdk::kMifareTypeSize);
    spite.fill(uid, sdk::kMifareUidSize);
    return spite.result();
}

int vek_mifare_authentication(sdk::DeviceHandle /*device*/, std::uint8_t /*sector*/, char /*keyType*/, const char *key)
{
    read({key});
    return resultOf("vek_mifare_authentication");
}

int vek_mifare_change_key(sdk::DeviceHandle /*device*/, std::uint8_t /*sector*/, char /*keyType*/, const char *key)
{
    read({key});
    return resultOf("vek_mifare_change_key");
}

int vek_mifare_read_block(sdk::DeviceHandle /*device*/, std::uint8_t /*block*/, char *data)
{
    return textCall("vek_mifare_read_block", data, sdk::kMifareBlockSize);
}

int vek_mifare_write_block(sdk::DeviceHandle /*device*/, std::uint8_t /*block*/, const char *data)
{
    read({data});
    return resultOf("vek_mifare_write_block");
}

int vek_mifare_init_value(sdk::DeviceHandle /*device*/, std::uint8_t /*block*/, int /*value*/)
{
    return resultOf("vek_mifare_init_value");
}

int vek_mifare_increase_value(sdk::DeviceHandle /*device*/, std::uint8_t /*block*/, int /*value*/)
{
    return resultOf("vek_mifare_increase_value");
}

int vek_mifare_decrease_value(sdk::DeviceHandle /*device*/, std::uint8_t /*block*/, int /*value*/)
{
    return resultOf("vek_mifare_decrease_value");
}

int vek_mifare_read_value(sdk::DeviceHandle /*device*/, std::uint8_t /*block*/, int *value)
{
    Spite spite("vek_mifare_read_value");
    spite.write(value);
    return spite.result();
}

int vek_ssse_get_issuer_info(sdk::DeviceHandle /*device*/, std::uint8_t /*slot*/, std::uint32_t /*timeoutMs*/,
                             char *record, int /*constant*/)
{
    return textCall("vek_ssse_get_issuer_info", record, sdk::kSsseRecordSize);
}

int vek_ssse_get_user_info(sdk::DeviceHandle /*device*/, std::uint8_t /*slot*/, std::uint32_t /*timeoutMs*/,
                           char *record, int /*constant*/)
{
    return textCall("vek_ssse_get_user_info", record, sdk::kSsseRecordSize);
}

// Nobody calls these.
#define UNIFOLD_HOSTILE_CALLED(name, Contract)
#define UNIFOLD_HOSTILE_UNCALLED(name)                                                                                 \
    int name()                                                                                                         \
    {                                                                                                                  \
        std::abort();                                                                                                  \
    }
UNIFOLD_ENTRY_POINTS(UNIFOLD_HOSTILE_CALLED, UNIFOLD_HOSTILE_UNCALLED)
