#include "drivers/virtual/cards/cpu_card.h"

#include <algorithm>
#include <stdexcept>

#include "drivers/virtual/cards/card_builder.h"
#include "drivers/virtual/cards/file_system.h"

namespace drivers::cards {

namespace {

constexpr std::uint8_t kGetResponse = 0xC0;

bool knownClass(std::uint8_t cla)
{
    return cla == 0x00 || cla == 0x80;
}

/// A status word whose low byte says how many bytes come next, 00 for 256 and more.
Reply withLength(std::uint16_t status, std::size_t size)
{
    return static_cast<std::uint16_t>(status | (std::min<std::size_t>(size, 256) & 0xFFU));
}

} // namespace

struct CpuCard::Parts {
    explicit Parts(const nlohmann::json &text) : description(text), files(revision) {}

    Reply run(const Command &command) const;
    Reply getResponse(const Command &command);
    Reply delivered(const Command &command, Reply reply);

    nlohmann::json description;
    Revision revision;
    FileSystem files;
    Bytes atr;
    Protocol protocol = Protocol::kT0;
    Bytes waiting; ///< data that GET RESPONSE fetches
};

CpuCard::CpuCard(const nlohmann::json &description) : m_parts(std::make_unique<Parts>(description))
{
    const JsonNode root(m_parts->description);
    m_parts->atr = root.at("atr").hex(2, 33);
    try {
        m_parts->protocol = protocolOfAtr(m_parts->atr);
    } catch (const std::runtime_error &error) {
        root.at("atr").fail(error.what());
    }
    buildCard(root, m_parts->files.master(), m_parts->revision);
    reset();
}

CpuCard::~CpuCard() = default;

nlohmann::json CpuCard::description() const
{
    nlohmann::json description = m_parts->description;
    if (changed())
        saveCard(m_parts->files.master(), description);
    return description;
}

Bytes CpuCard::atr() const
{
    return m_parts->atr;
}

Protocol CpuCard::protocol() const
{
    return m_parts->protocol;
}

void CpuCard::reset()
{
    m_parts->waiting.clear();
    m_parts->files.reset();
}

bool CpuCard::changed() const
{
    return revision() != 0;
}

unsigned long CpuCard::revision() const
{
    return m_parts->revision.count();
}

Bytes CpuCard::transmit(const Bytes &command)
{
    const auto parsed = parseCommand(command);
    if (!parsed)
        return Reply(sw::kWrongLength).bytes();
    if (!knownClass(parsed->cla))
        return Reply(sw::kWrongClass).bytes();
    if (parsed->ins == kGetResponse)
        return m_parts->getResponse(*parsed).bytes();
    m_parts->waiting.clear();
    return m_parts->delivered(*parsed, m_parts->run(*parsed)).bytes();
}

Reply CpuCard::Parts::run(const Command &command) const
{
    const InstructionMap none;
    const auto &application = files.current().application;
    bool instructionKnown = false;
    for (const InstructionMap *map : {application ? &application->instructions() : &none, &files.instructions()}) {
        const auto found = map->find(command.ins);
        if (found == map->end())
            continue;
        instructionKnown = true;
        if (found->second.cla == command.cla)
            return found->second.run(command);
    }
    return instructionKnown ? sw::kWrongClass : sw::kWrongInstruction;
}

Reply CpuCard::Parts::delivered(const Command &command, Reply reply)
{
    const std::size_t size = reply.data.size();
    if (size == 0)
        return reply;
    const bool exact = command.expected && *command.expected == size;
    const bool room = !command.expected || *command.expected >= size;
    if (command.data.empty()) {
        // Under T=0 the reader has to know beforehand how many bytes come.
        const bool fits = protocol == Protocol::kT0 ? exact : room;
        return fits ? reply : withLength(sw::kExpectLength, size);
    }
    if (protocol == Protocol::kT1 && room)
        return reply;
    waiting = std::move(reply.data);
    return withLength(sw::kDataWaiting, size);
}

Reply CpuCard::Parts::getResponse(const Command &command)
{
    if (command.p1p2() != 0)
        return sw::kWrongP1P2;
    if (!command.data.empty() || !command.expected)
        return sw::kWrongLength;
    if (waiting.empty())
        return sw::kConditionsNotSatisfied;
    if (*command.expected > waiting.size())
        return withLength(sw::kExpectLength, waiting.size());
    const auto end = waiting.begin() + static_cast<std::ptrdiff_t>(*command.expected);
    Reply reply(Bytes(waiting.begin(), end));
    waiting.erase(waiting.begin(), end);
    if (!waiting.empty())
        reply.status = withLength(sw::kDataWaiting, waiting.size()).status;
    return reply;
}

} // namespace drivers::cards
