#include "drivers/core/call_shapes.h"

#include "sdk/entry_point_table.h"

#include <algorithm>

namespace drivers {

namespace {

constexpr std::size_t kNameSize = 256;
constexpr std::size_t kPathSize = 4096;
constexpr std::size_t kKeySize = 13;   // 12 digits and the NUL
constexpr std::size_t kBlockSize = 33; // 32 digits and the NUL
constexpr std::size_t kNone = Parameter::kNone;

constexpr Parameter number(const char *name)
{
    return {name, Role::Number, 0, kNone, Secret::None};
}

constexpr Parameter text(const char *name, std::size_t size, Secret secret = Secret::None)
{
    return {name, Role::Text, size, kNone, secret};
}

constexpr Parameter reply(const char *name, std::size_t size, std::size_t companion = kNone,
                          Secret secret = Secret::None)
{
    return {name, Role::TextReply, size, companion, secret};
}

constexpr Parameter hexReply(const char *name, std::size_t size, std::size_t companion = kNone,
                             Secret secret = Secret::None)
{
    return {name, Role::HexReply, size, companion, secret};
}

constexpr Parameter kHandle = number("handle");
constexpr Parameter kSlot = number("slot");
constexpr Parameter kTimeout = number("timeoutMs");
constexpr Parameter kBlock = number("block");
constexpr Parameter kSector = number("sector");
constexpr Parameter kValue = number("value");
constexpr Parameter kConstant = number("constant");
constexpr Parameter kKeyType = {"keyType", Role::Character, 0, kNone, Secret::None};
constexpr Parameter kKey = text("key", kKeySize, Secret::All);
constexpr Parameter kRecord = reply("record", sdk::kSsseRecordSize);

constexpr std::array kShapes = {
    CallShape{"vek_enum_devices", {{number("transport"), {"list", Role::List, kPathSize, kNone, Secret::None}}}},
    CallShape{"vek_free_list", {{{"list", Role::Pointer, 0, kNone, Secret::None}}}},
    CallShape{"vek_open", {{text("device", kNameSize), number("reserved"), number("baud")}}},
    CallShape{"vek_close", {{kHandle, number("reserved")}}},
    CallShape{"vek_set_baud", {{kHandle, number("baud"), number("mode")}}},
    CallShape{"vek_firm_version", {{kHandle, reply("version", sdk::kFirmVersionSize, 2), number("length")}}},
    CallShape{"vek_msr_mode_switch", {{kHandle, number("mode")}}},
    CallShape{"vek_msr_qm_start", {{kHandle}}},
    CallShape{"vek_msr_qm_status", {{kHandle}}},
    CallShape{
        "vek_msr_qm_get",
        {{kHandle, reply("track1", sdk::kTrackSize, 4, Secret::All), reply("track2", sdk::kTrackSize, 5, Secret::All),
          reply("track3", sdk::kTrackSize, 6, Secret::All), number("length1"), number("length2"), number("length3")}}},
    CallShape{"vek_msr_qm_stop", {{kHandle}}},
    CallShape{"vek_beep", {{kHandle, number("onTime"), number("offTime"), number("times")}}},
    CallShape{"vek_msr_write",
              {{kHandle, number("selection"), number("reserved"), text("track1", sdk::kTrackSize, Secret::All),
                text("track2", sdk::kTrackSize, Secret::All), text("track3", sdk::kTrackSize, Secret::All), kTimeout}}},
    CallShape{"vek_icc_poweron", {{kHandle, kSlot, kTimeout, hexReply("atr", sdk::kAtrSize, 4), number("length")}}},
    CallShape{"vek_icc_poweroff", {{kHandle, kSlot, kTimeout}}},
    CallShape{"vek_icc_status", {{kHandle, kSlot}}},
    CallShape{"vek_icc_apdu",
              {{kHandle,
                kSlot,
                {"command", Role::CountedText, 0, 3, Secret::Command},
                number("commandLength"),
                hexReply("reply", sdk::kApduReplySize, 5, Secret::Answer),
                number("replyLength")}}},
    CallShape{"vek_pboc_get_card_info",
              {{kHandle, kSlot, kTimeout, text("aid", kNameSize), text("tags", kNameSize), number("interfaceUsed"),
                reply("result", sdk::kPbocResultSize, 7, Secret::Letters), number("length"), number("flag")}}},
    CallShape{"vek_pboc_get_arqc",
              {{kHandle,
                kSlot,
                kTimeout,
                text("aid", kNameSize),
                kConstant,
                {"transactionData", Role::CountedText, 0, 6, Secret::None},
                number("transactionDataLength"),
                reply("result", sdk::kPbocResultSize, 8),
                number("length"),
                number("flag")}}},
    CallShape{"vek_idcr_getinfo",
              {{kHandle, number("flags"), kTimeout, kConstant, reply("info", sdk::kIdInfoSize),
                reply("extra", sdk::kIdExtraSize), text("photoPath", kPathSize), text("frontPath", kPathSize),
                text("backPath", kPathSize)}}},
    CallShape{"vek_idcr_read_samid", {{kHandle, kTimeout, reply("text", sdk::kSamIdSize)}}},
    CallShape{"vek_idcr_read_uid", {{kHandle, kTimeout, reply("text", sdk::kIdUidSize)}}},
    CallShape{"vek_idcr_read_emid", {{kHandle, kTimeout, reply("text", sdk::kIdEmidSize)}}},
    CallShape{"vek_idcr_read_dn", {{kHandle, kTimeout, reply("text", sdk::kIdDnSize)}}},
    CallShape{"vek_idcr_set_separation", {{{"separator", Role::Character, 0, kNone, Secret::None}}}},
    CallShape{"vek_idcr_transive",
              {{kHandle,
                kTimeout,
                number("byte1"),
                number("byte2"),
                number("statusWord"),
                {"data", Role::ByteReply, sdk::kTransiveDataSize, 7, Secret::None},
                number("capacity"),
                number("length")}}},
    CallShape{"vek_probe_rf", {{kHandle, number("state"), number("cardType")}}},
    CallShape{"vek_mifare_request",
              {{kHandle, kTimeout, reply("type", sdk::kMifareTypeSize), reply("uid", sdk::kMifareUidSize)}}},
    CallShape{"vek_mifare_authentication", {{kHandle, kSector, kKeyType, kKey}}},
    CallShape{"vek_mifare_read_block",
              {{kHandle, kBlock, hexReply("data", sdk::kMifareBlockSize, kNone, Secret::Block)}}},
    CallShape{"vek_mifare_write_block", {{kHandle, kBlock, text("data", kBlockSize, Secret::Block)}}},
    CallShape{"vek_mifare_init_value", {{kHandle, kBlock, kValue}}},
    CallShape{"vek_mifare_read_value", {{kHandle, kBlock, kValue}}},
    CallShape{"vek_mifare_increase_value", {{kHandle, kBlock, kValue}}},
    CallShape{"vek_mifare_decrease_value", {{kHandle, kBlock, kValue}}},
    CallShape{"vek_mifare_change_key", {{kHandle, kSector, kKeyType, kKey}}},
    CallShape{"vek_ssse_get_issuer_info", {{kHandle, kSlot, kTimeout, kRecord, kConstant}}},
    CallShape{"vek_ssse_get_user_info", {{kHandle, kSlot, kTimeout, kRecord, kConstant}}},
};

} // namespace

const CallShape *findCallShape(std::string_view name)
{
    const auto *const found =
        std::find_if(kShapes.begin(), kShapes.end(), [name](const CallShape &shape) { return shape.name == name; });
    return found == kShapes.end() ? nullptr : found;
}

bool isEntryPoint(std::string_view name)
{
#define UNIFOLD_NAME_CALLED(entryPoint, Contract) #entryPoint,
#define UNIFOLD_NAME_UNCALLED(entryPoint) #entryPoint,
    constexpr std::array kNames = {UNIFOLD_ENTRY_POINTS(UNIFOLD_NAME_CALLED, UNIFOLD_NAME_UNCALLED) ""};
#undef UNIFOLD_NAME_CALLED
#undef UNIFOLD_NAME_UNCALLED
    return !name.empty() && std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

} // namespace drivers
