#include "drivers/core/applications/card_commands.h"

namespace drivers {

unsigned statusWord(const Bytes &reply)
{
    if (reply.size() < 2)
        return 0;
    return static_cast<unsigned>(reply[reply.size() - 2]) << 8U | reply[reply.size() - 1];
}

ReturnCode exchange(CardChannel &channel, const Bytes &command, Bytes &data)
{
    data.clear();
    Bytes reply;
    const ReturnCode result = channel.transmit(command, reply);
    if (result != kSuccess)
        return result;
    if (statusWord(reply) != 0x9000)
        return kCardError;
    reply.resize(reply.size() - 2);
    data = std::move(reply);
    return kSuccess;
}

Bytes selectByName(const Bytes &name)
{
    return commandWithData(0x00, 0xA4, 0x04, 0x00, name);
}

Bytes selectFile(std::uint16_t identifier)
{
    return {0x00,
            0xA4,
            0x00,
            0x00,
            0x02,
            static_cast<std::uint8_t>(identifier >> 8U),
            static_cast<std::uint8_t>(identifier & 0xFFU),
            0x00};
}

Bytes readRecord(std::uint8_t number, std::uint8_t shortIdentifier)
{
    return {0x00, 0xB2, number, static_cast<std::uint8_t>(static_cast<unsigned>(shortIdentifier) << 3U | 0x04U), 0x00};
}

Bytes commandWithData(std::uint8_t classByte, std::uint8_t instruction, std::uint8_t p1, std::uint8_t p2,
                      const Bytes &data)
{
    Bytes command;
    command.reserve(data.size() + 6);
    command = {classByte, instruction, p1, p2, static_cast<std::uint8_t>(data.size())};
    command.insert(command.end(), data.begin(), data.end());
    command.push_back(0x00);
    return command;
}

} // namespace drivers
