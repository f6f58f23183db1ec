// The signature and meaning of every SDK entry point that the bench calls. Both sides of the C interface are compiled
// against this header: the bench calls through it (sdk/entry_points.h), our own driver libraries export through it
// (drivers/core/abi.h).
//
// Common to all calls unless said otherwise:
//   - The result is a signed 32-bit code, 0 for success. What other codes mean is the driver library's business.
//   - Text is NUL-terminated. Bytes (APDUs, keys, blocks) travel as hexadecimal text.
//   - Output buffers belong to the caller, are zero-filled before the call, and have the size named here; it is not
//     passed, so a driver must know it (the constants below). A caller must not rely on the driver's NUL.
//   - Length outputs are 0 before the call.
//   - Time-outs are milliseconds.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sdk {

/// An open device; 0 means none.
using DeviceHandle = std::int64_t;

// Transports of EnumDevices.
constexpr int kTransportUsb = 1;
constexpr int kTransportSerial = 2;
constexpr int kTransportPcsc = 3;
constexpr int kTransportSdt = 4;

// Slot codes of the IC card, PBOC and social security calls.
constexpr std::uint8_t kSlotContact = 0x00;
constexpr std::uint8_t kSlotAutomatic = 0x02;
constexpr std::uint8_t kSlotPsam1 = 0x10;
constexpr std::uint8_t kSlotPsam2 = 0x11;
constexpr std::uint8_t kSlotPsam3 = 0x12;
constexpr std::uint8_t kSlotPsam4 = 0x13;
constexpr std::uint8_t kSlotContactless = 0xFF;

// Modes of MsrModeSwitch: the reader types the tracks like a USB keyboard, or the host polls the reader.
constexpr int kMsrModeKeyboard = 0;
constexpr int kMsrModeCommand = 1;

// Answers to the status call of a swipe session; any other means that nothing came yet.
constexpr int kMsrSwiped = 1;
constexpr int kMsrSwipedNoData = 9;

// Sizes of the output buffers, in bytes, the NUL included.
constexpr std::size_t kFirmVersionSize = 256;
constexpr std::size_t kTrackSize = 256;
constexpr std::size_t kAtrSize = 256;
constexpr std::size_t kApduReplySize = 1024;
constexpr std::size_t kPbocResultSize = 1024;
constexpr std::size_t kIdInfoSize = 512;
constexpr std::size_t kIdExtraSize = 2048;
constexpr std::size_t kSamIdSize = 40;
constexpr std::size_t kIdUidSize = 32;
constexpr std::size_t kIdDnSize = 256;
constexpr std::size_t kIdEmidSize = 64;
constexpr std::size_t kTransiveDataSize = 8192;
constexpr std::size_t kMifareTypeSize = 2;
constexpr std::size_t kMifareUidSize = 16;
constexpr std::size_t kMifareBlockSize = 40;
constexpr std::size_t kSsseRecordSize = 1024;

// --- Device --------------------------------------------------------------------------------------------------------

/// Lists the devices of a transport. Returns how many there are; less than 1: none, and *list is not set.
/// Otherwise *list is a text owned by the driver, the names each followed by "|" (the last may lack it); the caller
/// gives it back with FreeList.
using EnumDevices = int(int transport, char **list);

/// Releases a list made by EnumDevices.
using FreeList = void(char *list);

/// Opens a device by the name that EnumDevices gave it. `reserved` is always 0; `baud` is in bits per second and
/// counts for serial devices. A null name with baud 0 opens the default USB device. Returns 0 on failure.
using Open = std::intptr_t(const char *device, std::intptr_t reserved, int baud);

/// Closes a device; `reserved` is always 0. Called with handle 0 too, when nothing is open.
using Close = int(DeviceHandle handle, int reserved);

/// Sets the bit rate of a serial reader. `mode` 0: until the power goes, 1: stored as the reader's default. Other
/// devices answer success at once.
using SetBaud = int(DeviceHandle handle, int baud, std::uint8_t mode);

/// Reads the firmware version as UTF-8 text into `version` (kFirmVersionSize bytes).
using FirmVersion = int(DeviceHandle handle, char *version, std::uint32_t *length);

/// Sounds the beeper `times` times; on and off time in units of 50 ms.
using Beep = int(DeviceHandle handle, int onTime, int offTime, int times);

// --- Magnetic stripe -----------------------------------------------------------------------------------------------

/// `mode` is kMsrModeCommand or kMsrModeKeyboard.
using MsrModeSwitch = int(DeviceHandle handle, int mode);

/// Three calls share this shape. Start: begins a swipe session. Status: kMsrSwiped = data ready, kMsrSwipedNoData = the
/// stripe held no data, anything else = nothing yet. Stop: ends the session.
using MsrSession = int(DeviceHandle handle);

/// Fetches the tracks of a swipe as ASCII text (kTrackSize bytes each) with their lengths.
using MsrGet = int(DeviceHandle handle, char *track1, char *track2, char *track3, int *length1, int *length2,
                   int *length3);

/// Writes tracks at the next swipe. The decimal digits of `selection` name the tracks that carry data, in ascending
/// order: 1, 2, 3, 12, 13, 23 or 123. `reserved` is always 0. Tracks not selected are the empty text.
using MsrWrite = int(DeviceHandle handle, int selection, int reserved, const char *track1, const char *track2,
                     const char *track3, int timeoutMs);

// --- IC card -------------------------------------------------------------------------------------------------------

/// Powers a card on. `atr` (kAtrSize bytes) receives the answer to reset as hexadecimal text.
using IccPowerOn = int(DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, char *atr,
                       std::uint32_t *length);

using IccPowerOff = int(DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs);

/// The result is the card status itself.
using IccStatus = int(DeviceHandle handle, std::uint8_t slot);

/// Exchanges one APDU: hexadecimal text of `commandLength` characters in, hexadecimal text (kApduReplySize bytes) out,
/// the reply's data followed by SW1 SW2.
using IccApdu = int(DeviceHandle handle, std::uint8_t slot, const char *command, std::uint32_t commandLength,
                    char *reply, std::uint32_t *replyLength);

/// Looks for a card in the RF field. `state`: 3 the card came, 2 it left, anything else no change.
using ProbeRf = int(DeviceHandle handle, std::uint8_t *state, std::uint8_t *cardType);

// --- PBOC ----------------------------------------------------------------------------------------------------------

/// Reads the data elements named by `tags`, one capital letter each, into `result` (kPbocResultSize bytes).
/// `interfaceUsed` receives a byte; `flag` is always 1.
using PbocGetCardInfo = int(DeviceHandle handle, std::uint8_t slot, std::uint16_t timeoutMs, const char *aid,
                            const char *tags, std::uint8_t *interfaceUsed, char *result, std::uint16_t *length,
                            std::uint8_t flag);

/// Makes an application cryptogram (ARQC) over transaction data: fields of one letter, three decimal digits of length
/// and the value. `constant` is always 10, `flag` always 0. `result`: kPbocResultSize bytes.
using PbocGetArqc = int(DeviceHandle handle, std::uint8_t slot, std::uint16_t timeoutMs, const char *aid, int constant,
                        const char *transactionData, int transactionDataLength, char *result, std::uint16_t *length,
                        std::uint8_t flag);

// --- Resident ID card ----------------------------------------------------------------------------------------------

/// Reads a card. `flags`: bit 0 fingerprint, 1 text, 2 photo, 3 front and back composite, 4 force re-read, 11 slow
/// PC, 12 stop on error. `constant` is always 1. `info` (kIdInfoSize bytes): the fields as UTF-8 text joined by the
/// separator, "|" unless IdcrSetSeparation changed it. `extra`: kIdExtraSize bytes. The driver writes the pictures
/// asked for to the three paths.
using IdcrGetInfo = int(DeviceHandle handle, std::uint32_t flags, std::uint32_t timeoutMs, int constant, char *info,
                        char *extra, const char *photoPath, const char *frontPath, const char *backPath);

/// Four calls share this shape, each with its own size of `text`: SAM ID (kSamIdSize), UID (kIdUidSize), DN
/// (kIdDnSize), EMID (kIdEmidSize).
using IdcrReadText = int(DeviceHandle handle, std::uint32_t timeoutMs, char *text);

/// Passes a two-byte command to the ID module. `data` has `capacity` bytes (kTransiveDataSize) and receives `length`
/// bytes, not text.
using IdcrTransive = int(DeviceHandle handle, std::uint32_t timeoutMs, std::uint8_t byte1, std::uint8_t byte2,
                         std::uint32_t *statusWord, std::uint8_t *data, int capacity, std::int32_t *length);

/// Sets the separator of IdcrGetInfo's fields, for the whole library: it takes no handle.
using IdcrSetSeparation = int(char separator);

// --- Mifare Classic ------------------------------------------------------------------------------------------------

/// Finds a card. `type` (kMifareTypeSize bytes): one character; `uid` (kMifareUidSize bytes): text.
using MifareRequest = int(DeviceHandle handle, int timeoutMs, char *type, char *uid);

/// Authenticate and change key share this shape: `keyType` 'A' or 'B', `key` 12 hexadecimal digits.
using MifareKey = int(DeviceHandle handle, std::uint8_t sector, char keyType, const char *key);

/// `block` is absolute, 0 to 63. `data` (kMifareBlockSize bytes): 32 hexadecimal digits.
using MifareReadBlock = int(DeviceHandle handle, std::uint8_t block, char *data);

using MifareWriteBlock = int(DeviceHandle handle, std::uint8_t block, const char *data);

/// Initialise, increase and decrease a value block share this shape.
using MifareValue = int(DeviceHandle handle, std::uint8_t block, int value);

using MifareReadValue = int(DeviceHandle handle, std::uint8_t block, int *value);

// --- Social security card ------------------------------------------------------------------------------------------

/// Reads the issuer's or the holder's record into `record` (kSsseRecordSize bytes): fields separated by "|", the name
/// fields in GBK. `constant` is always 1.
using SsseGetInfo = int(DeviceHandle handle, std::uint8_t slot, std::uint32_t timeoutMs, char *record, int constant);

} // namespace sdk
