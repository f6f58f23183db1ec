#include "drivers/virtual/reader/reply_damage.h"

#include "drivers/core/bytes.h"

#include <algorithm>
#include <cstring>

namespace drivers::reader {

using tray::Fault;
using tray::FaultKind;

namespace {

/// One reply of a call, in bytes; a hexadecimal one has two characters each.
class Reply {
public:
    Reply(const Call &call, std::size_t index)
        : m_parameter(call.shape.parameters.at(index)), m_text(call.arguments[index].text())
    {
        if (m_parameter.companion != Parameter::kNone)
            m_lengthOut = &call.arguments[m_parameter.companion];
        if (m_text == nullptr)
            return;
        if (m_parameter.role != Role::ByteReply)
            m_length = ::strnlen(m_text, m_parameter.size);
        else if (m_lengthOut != nullptr)
            m_length =
                std::min(m_parameter.size, static_cast<std::size_t>(std::max<std::int64_t>(m_lengthOut->number(), 0)));
    }

    void cut(std::size_t bytes)
    {
        const std::size_t kept = bytes > m_length ? m_length : std::min(m_length, bytes * width());
        if (kept == m_length)
            return;
        std::fill(m_text + kept, m_text + m_length, '\0');
        if (m_lengthOut != nullptr)
            m_lengthOut->setNumber(kept);
    }

    void invert(std::size_t byte, unsigned mask)
    {
        if (byte >= m_length / width())
            return;
        char *const place = m_text + byte * width();
        if (m_parameter.role != Role::HexReply) {
            *place = static_cast<char>(static_cast<unsigned char>(*place) ^ mask);
            return;
        }
        if (std::optional<Bytes> value = fromHex({place, 2})) {
            value->front() = static_cast<std::uint8_t>(value->front() ^ mask);
            toHex(*value).copy(place, 2);
        }
    }

private:
    std::size_t width() const { return m_parameter.role == Role::HexReply ? 2 : 1; }

    const Parameter &m_parameter;
    char *m_text;
    std::size_t m_length = 0;
    const Argument *m_lengthOut = nullptr;
};

} // namespace

void damageReplies(const Fault &fault, const Call &call)
{
    for (std::size_t i = 0; i < CallShape::kMostParameters; ++i) {
        if (call.shape.parameters.at(i).role < Role::TextReply)
            continue;
        Reply reply(call, i);
        if (fault.kind == FaultKind::Short)
            reply.cut(static_cast<std::size_t>(fault.value));
        else if (fault.kind == FaultKind::Flipped)
            reply.invert(static_cast<std::size_t>(fault.value), static_cast<unsigned>(fault.mask));
    }
}

} // namespace drivers::reader
