// The commands of ISO 7816-4 and EMV that the card applications send.
#pragma once

#include "drivers/core/card_channel.h"

namespace drivers {

/// The status word of a reply; 0 for a reply too short to have one.
unsigned statusWord(const Bytes &reply);

/// Sends a command and takes the status word off the reply. Any status word but 9000 is kCardError, with `data` empty.
ReturnCode exchange(CardChannel &channel, const Bytes &command, Bytes &data);

/// SELECT by name, first occurrence; a leading part of the name will do.
/// @param name 1 to 16 bytes
Bytes selectByName(const Bytes &name);

/// SELECT of a file under the current directory by its identifier.
Bytes selectFile(std::uint16_t identifier);

/// READ RECORD of a record by number in the file of a short identifier (1 to 30).
Bytes readRecord(std::uint8_t number, std::uint8_t shortIdentifier);

/// A command with data and with any length of reply.
/// @param data 1 to 255 bytes
Bytes commandWithData(std::uint8_t classByte, std::uint8_t instruction, std::uint8_t p1, std::uint8_t p2,
                      const Bytes &data);

} // namespace drivers
