// A card that is nothing but answers: for the tests of the host side.
#pragma once

#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "drivers/core/card_channel.h"

namespace tests {

inline drivers::Bytes hex(std::string_view text)
{
    return drivers::fromHex(text).value();
}

/// Answers each command by a function of it, and keeps what was sent.
class ScriptedChannel : public drivers::CardChannel {
public:
    using Answer = std::function<drivers::Bytes(const drivers::Bytes &)>;

    explicit ScriptedChannel(Answer answer) : m_answer(std::move(answer)) {}

    drivers::ReturnCode transmit(const drivers::Bytes &command, drivers::Bytes &reply) override
    {
        sent.push_back(command);
        reply = m_answer(command);
        return drivers::kSuccess;
    }

    std::vector<drivers::Bytes> sent;

private:
    Answer m_answer;
};

} // namespace tests
