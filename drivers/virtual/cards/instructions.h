// The map of instructions that makes a card's command set.
#pragma once

#include <functional>
#include <map>

#include "drivers/virtual/cards/apdu.h"

namespace drivers::cards {

struct Instruction {
    std::uint8_t cla = 0x00;
    std::function<Reply(const Command &)> run;
};

/// By instruction byte.
using InstructionMap = std::map<std::uint8_t, Instruction>;

/// Counts the changes of what a card keeps without power.
class Revision {
public:
    void bump() { ++m_count; }
    unsigned long count() const { return m_count; }

private:
    unsigned long m_count = 0;
};

} // namespace drivers::cards
