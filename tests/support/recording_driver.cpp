// A driver library for tests: records every call and answers as the test says (tests/support/recorder.h).
#include "drivers/core/abi.h"
#include "tests/support/recorder.h"

#include <algorithm>
#include <cstdio>
#include <string>

UNIFOLD_EXPORT Recorder *unifold_test_recorder()
{
    static Recorder instance;
    return &instance;
}

namespace {

/// Upper-case hexadecimal with at least `digits` digits.
std::string hex(unsigned long long value, int digits = 1)
{
    char text[32];
    std::snprintf(text, sizeof text, "%0*llX", digits, value);
    return text;
}

std::string handle(sdk::DeviceHandle value)
{
    return hex(static_cast<unsigned long long>(value));
}

std::string byte(std::uint8_t value)
{
    return "0x" + hex(value, 2);
}

template <typename Number>
std::string number(Number value)
{
    return std::to_string(value);
}

std::string text(const char *value)
{
    return value == nullptr ? "null" : '"' + std::string(value) + '"';
}

template <typename Element>
std::string output(const Element *buffer, std::size_t size, const char *type = "char")
{
    const bool zeroed = std::all_of(buffer, buffer + size, [](Element element) { return element == 0; });
    return type + ("[" + std::to_string(size) + "]") + (zeroed ? "" : "!");
}

template <typename Number>
std::string output(const Number *value)
{
    return "&" + std::to_string(*value);
}

void record(const char *name, std::initializer_list<std::string> arguments)
{
    std::string call = std::string(name) + "(";
    const char *separator = "";
    for (const std::string &argument : arguments) {
        call += separator + argument;
        separator = ", ";
    }
    unifold_test_recorder()->calls.push_back(call + ")");
}

template <typename Result, typename... Parameters, typename... Arguments>
Result answer(Result unset, const std::function<Result(Parameters...)> &script, Arguments... arguments)
{
    return script ? script(arguments...) : unset;
}

} // namespace

#define SCRIPT(name) unifold_test_recorder()->name

int vek_enum_devices(int transport, char **list)
{
    record("vek_enum_devices", {number(transport), *list == nullptr ? "&null" : "&list"});
    return answer(0, SCRIPT(vek_enum_devices), transport, list);
}

void vek_free_list(char *list)
{
    record("vek_free_list", {list == nullptr ? "null" : "list"});
    if (SCRIPT(vek_free_list))
        SCRIPT(vek_free_list)(list);
}

std::intptr_t vek_open(const char *device, std::intptr_t reserved, int baud)
{
    record("vek_open", {text(device), number(reserved), number(baud)});
    return answer(std::intptr_t{0x1A2B}, SCRIPT(vek_open), device, reserved, baud);
}

int vek_close(sdk::DeviceHandle device, int reserved)
{
    record("vek_close", {handle(device), number(reserved)});
    return answer(0, SCRIPT(vek_close), device, reserved);
}

int vek_set_baud(sdk::DeviceHandle device, int baud, std::uint8_t mode)
{
    record("vek_set_baud", {handle(device), number(baud), byte(mode)});
    return answer(0, SCRIPT(vek_set_baud), device, baud, mode);
}

int vek_firm_version(sdk::DeviceHandle device, char *version, std::uint32_t *length)
{
    record("vek_firm_version", {handle(device), output(version, sdk::kFirmVersionSize), output(length)});
    return answer(0, SCRIPT(vek_firm_version), device, version, length);
}

int vek_beep(sdk::DeviceHandle device, int onTime, int offTime, int times)
{
    record("vek_beep", {handle(device), number(onTime), number(offTime), number(times)});
    return answer(0, SCRIPT(vek_beep), device, onTime, offTime, times);
}

int vek_msr_mode_switch(sdk::DeviceHandle device, int mode)
{
    record("vek_msr_mode_switch", {handle(device), number(mode)});
    return answer(0, SCRIPT(vek_msr_mode_switch), device, mode);
}

int vek_msr_qm_start(sdk::DeviceHandle device)
{
    record("vek_msr_qm_start", {handle(device)});
    return answer(0, SCRIPT(vek_msr_qm_start), device);
}

int vek_msr_qm_status(sdk::DeviceHandle device)
{
    record("vek_msr_qm_status", {handle(device)});
    return answer(0, SCRIPT(vek_msr_qm_status), device);
}

int vek_msr_qm_get(sdk::DeviceHandle device, char *track1, char *track2, char *track3, int *length1, int *length2,
                   int *length3)
{
    record("vek_msr_qm_get", {handle(device), output(track1, sdk::kTrackSize), output(track2, sdk::kTrackSize),
                              output(track3, sdk::kTrackSize), output(length1), output(length2), output(length3)});
    return answer(0, SCRIPT(vek_msr_qm_get), device, track1, track2, track3, length1, length2, length3);
}

int vek_msr_qm_stop(sdk::DeviceHandle device)
{
    record("vek_msr_qm_stop", {handle(device)});
    return answer(0, SCRIPT(vek_msr_qm_stop), device);
}

int vek_msr_write(sdk::DeviceHandle device, int selection, int reserved, const char *track1, const char *track2,
                  const char *track3, int timeoutMs)
{
    record("vek_msr_write", {handle(device), number(selection), number(reserved), text(track1), text(track2),
                             text(track3), number(timeoutMs)});
    return answer(0, SCRIPT(vek_msr_write), device, selection, reserved, track1, track2, track3, timeoutMs);
}

int vek_icc_poweron(sdk::DeviceHandle device, std::uint8_t slot, std::uint32_t timeoutMs, char *atr,
                    std::uint32_t *length)
{
    record("vek_icc_poweron",
           {handle(device), byte(slot), number(timeoutMs), output(atr, sdk::kAtrSize), output(length)});
    return answer(0, SCRIPT(vek_icc_poweron), device, slot, timeoutMs, atr, length);
}

int vek_icc_poweroff(sdk::DeviceHandle device, std::uint8_t slot, std::uint32_t timeoutMs)
{
    record("vek_icc_poweroff", {handle(device), byte(slot), number(timeoutMs)});
    return answer(0, SCRIPT(vek_icc_poweroff), device, slot, timeoutMs);
}

int vek_icc_status(sdk::DeviceHandle device, std::uint8_t slot)
{
    record("vek_icc_status", {handle(device), byte(slot)});
    return answer(0, SCRIPT(vek_icc_status), device, slot);
}

int vek_icc_apdu(sdk::DeviceHandle device, std::uint8_t slot, const char *command, std::uint32_t commandLength,
                 char *reply, std::uint32_t *replyLength)
{
    record("vek_icc_apdu", {handle(device), byte(slot), text(command), number(commandLength),
                            output(reply, sdk::kApduReplySize), output(replyLength)});
    return answer(0, SCRIPT(vek_icc_apdu), device, slot, command, commandLength, reply, replyLength);
}

int vek_probe_rf(sdk::DeviceHandle device, std::uint8_t *state, std::uint8_t *cardType)
{
    record("vek_probe_rf", {handle(device), output(state), output(cardType)});
    return answer(0, SCRIPT(vek_probe_rf), device, state, cardType);
}

int vek_pboc_get_card_info(sdk::DeviceHandle device, std::uint8_t slot, std::uint16_t timeoutMs, const char *aid,
                           const char *tags, std::uint8_t *interfaceUsed, char *result, std::uint16_t *length,
                           std::uint8_t flag)
{
    record("vek_pboc_get_card_info",
           {handle(device), byte(slot), number(timeoutMs), text(aid), text(tags), output(interfaceUsed),
            output(result, sdk::kPbocResultSize), output(length), byte(flag)});
    return answer(0, SCRIPT(vek_pboc_get_card_info), device, slot, timeoutMs, aid, tags, interfaceUsed, result, length,
                  flag);
}

int vek_pboc_get_arqc(sdk::DeviceHandle device, std::uint8_t slot, std::uint16_t timeoutMs, const char *aid,
                      int constant, const char *transactionData, int transactionDataLength, char *result,
                      std::uint16_t *length, std::uint8_t flag)
{
    record("vek_pboc_get_arqc",
           {handle(device), byte(slot), number(timeoutMs), text(aid), number(constant), text(transactionData),
            number(transactionDataLength), output(result, sdk::kPbocResultSize), output(length), byte(flag)});
    return answer(0, SCRIPT(vek_pboc_get_arqc), device, slot, timeoutMs, aid, constant, transactionData,
                  transactionDataLength, result, length, flag);
}

int vek_idcr_getinfo(sdk::DeviceHandle device, std::uint32_t flags, std::uint32_t timeoutMs, int constant, char *info,
                     char *extra, const char *photoPath, const char *frontPath, const char *backPath)
{
    record("vek_idcr_getinfo",
           {handle(device), "0x" + hex(flags), number(timeoutMs), number(constant), output(info, sdk::kIdInfoSize),
            output(extra, sdk::kIdExtraSize), text(photoPath), text(frontPath), text(backPath)});
    return answer(0, SCRIPT(vek_idcr_getinfo), device, flags, timeoutMs, constant, info, extra, photoPath, frontPath,
                  backPath);
}

namespace {

int readText(const char *name, std::size_t size, const std::function<sdk::IdcrReadText> &script,
             sdk::DeviceHandle device, std::uint32_t timeoutMs, char *out)
{
    record(name, {handle(device), number(timeoutMs), output(out, size)});
    return answer(0, script, device, timeoutMs, out);
}

} // namespace

int vek_idcr_read_samid(sdk::DeviceHandle device, std::uint32_t timeoutMs, char *out)
{
    return readText("vek_idcr_read_samid", sdk::kSamIdSize, SCRIPT(vek_idcr_read_samid), device, timeoutMs, out);
}

int vek_idcr_read_uid(sdk::DeviceHandle device, std::uint32_t timeoutMs, char *out)
{
    return readText("vek_idcr_read_uid", sdk::kIdUidSize, SCRIPT(vek_idcr_read_uid), device, timeoutMs, out);
}

int vek_idcr_read_emid(sdk::DeviceHandle device, std::uint32_t timeoutMs, char *out)
{
    return readText("vek_idcr_read_emid", sdk::kIdEmidSize, SCRIPT(vek_idcr_read_emid), device, timeoutMs, out);
}

int vek_idcr_read_dn(sdk::DeviceHandle device, std::uint32_t timeoutMs, char *out)
{
    return readText("vek_idcr_read_dn", sdk::kIdDnSize, SCRIPT(vek_idcr_read_dn), device, timeoutMs, out);
}

int vek_idcr_set_separation(char separator)
{
    record("vek_idcr_set_separation", {byte(static_cast<std::uint8_t>(separator))});
    return answer(0, SCRIPT(vek_idcr_set_separation), separator);
}

int vek_idcr_transive(sdk::DeviceHandle device, std::uint32_t timeoutMs, std::uint8_t byte1, std::uint8_t byte2,
                      std::uint32_t *statusWord, std::uint8_t *data, int capacity, std::int32_t *length)
{
    record("vek_idcr_transive", {handle(device), number(timeoutMs), byte(byte1), byte(byte2), output(statusWord),
                                 output(data, sdk::kTransiveDataSize, "byte"), number(capacity), output(length)});
    return answer(0, SCRIPT(vek_idcr_transive), device, timeoutMs, byte1, byte2, statusWord, data, capacity, length);
}

int vek_mifare_request(sdk::DeviceHandle device, int timeoutMs, char *type, char *uid)
{
    record("vek_mifare_request",
           {handle(device), number(timeoutMs), output(type, sdk::kMifareTypeSize), output(uid, sdk::kMifareUidSize)});
    return answer(0, SCRIPT(vek_mifare_request), device, timeoutMs, type, uid);
}

namespace {

int keyCall(const char *name, const std::function<sdk::MifareKey> &script, sdk::DeviceHandle device,
            std::uint8_t sector, char keyType, const char *key)
{
    record(name, {handle(device), number(sector), std::string{'\'', keyType, '\''}, text(key)});
    return answer(0, script, device, sector, keyType, key);
}

int valueCall(const char *name, const std::function<sdk::MifareValue> &script, sdk::DeviceHandle device,
              std::uint8_t block, int value)
{
    record(name, {handle(device), number(block), number(value)});
    return answer(0, script, device, block, value);
}

int recordCall(const char *name, const std::function<sdk::SsseGetInfo> &script, sdk::DeviceHandle device,
               std::uint8_t slot, std::uint32_t timeoutMs, char *out, int constant)
{
    record(name, {handle(device), byte(slot), number(timeoutMs), output(out, sdk::kSsseRecordSize), number(constant)});
    return answer(0, script, device, slot, timeoutMs, out, constant);
}

} // namespace

int vek_mifare_authentication(sdk::DeviceHandle device, std::uint8_t sector, char keyType, const char *key)
{
    return keyCall("vek_mifare_authentication", SCRIPT(vek_mifare_authentication), device, sector, keyType, key);
}

int vek_mifare_change_key(sdk::DeviceHandle device, std::uint8_t sector, char keyType, const char *key)
{
    return keyCall("vek_mifare_change_key", SCRIPT(vek_mifare_change_key), device, sector, keyType, key);
}

int vek_mifare_read_block(sdk::DeviceHandle device, std::uint8_t block, char *data)
{
    record("vek_mifare_read_block", {handle(device), number(block), output(data, sdk::kMifareBlockSize)});
    return answer(0, SCRIPT(vek_mifare_read_block), device, block, data);
}

int vek_mifare_write_block(sdk::DeviceHandle device, std::uint8_t block, const char *data)
{
    record("vek_mifare_write_block", {handle(device), number(block), text(data)});
    return answer(0, SCRIPT(vek_mifare_write_block), device, block, data);
}

int vek_mifare_init_value(sdk::DeviceHandle device, std::uint8_t block, int value)
{
    return valueCall("vek_mifare_init_value", SCRIPT(vek_mifare_init_value), device, block, value);
}

int vek_mifare_increase_value(sdk::DeviceHandle device, std::uint8_t block, int value)
{
    return valueCall("vek_mifare_increase_value", SCRIPT(vek_mifare_increase_value), device, block, value);
}

int vek_mifare_decrease_value(sdk::DeviceHandle device, std::uint8_t block, int value)
{
    return valueCall("vek_mifare_decrease_value", SCRIPT(vek_mifare_decrease_value), device, block, value);
}

int vek_mifare_read_value(sdk::DeviceHandle device, std::uint8_t block, int *value)
{
    record("vek_mifare_read_value", {handle(device), number(block), output(value)});
    return answer(0, SCRIPT(vek_mifare_read_value), device, block, value);
}

int vek_ssse_get_issuer_info(sdk::DeviceHandle device, std::uint8_t slot, std::uint32_t timeoutMs, char *out,
                             int constant)
{
    return recordCall("vek_ssse_get_issuer_info", SCRIPT(vek_ssse_get_issuer_info), device, slot, timeoutMs, out,
                      constant);
}

int vek_ssse_get_user_info(sdk::DeviceHandle device, std::uint8_t slot, std::uint32_t timeoutMs, char *out,
                           int constant)
{
    return recordCall("vek_ssse_get_user_info", SCRIPT(vek_ssse_get_user_info), device, slot, timeoutMs, out, constant);
}

// Nobody calls these; a call that comes all the same is seen.
#define UNIFOLD_RECORD_CALLED(name, Contract)
#define UNIFOLD_RECORD_UNCALLED(name)                                                                                  \
    int name()                                                                                                         \
    {                                                                                                                  \
        record(#name, {});                                                                                             \
        return 0;                                                                                                      \
    }
UNIFOLD_ENTRY_POINTS(UNIFOLD_RECORD_CALLED, UNIFOLD_RECORD_UNCALLED)
