#include "drivers/core/ber_tlv.h"

namespace drivers {

namespace {

constexpr int kMaxDepth = 8;

/// Walks over bytes without ever leaving them.
class Cursor {
public:
    explicit Cursor(const Bytes &data) : m_data(data) {}

    bool atEnd() const { return m_position >= m_data.size(); }
    std::uint8_t peek() const { return m_data[m_position]; }
    void skip() { ++m_position; }

    std::optional<std::uint8_t> byte()
    {
        if (atEnd())
            return std::nullopt;
        return m_data[m_position++];
    }

    std::optional<Bytes> bytes(std::size_t count)
    {
        if (count > m_data.size() - m_position)
            return std::nullopt;
        const auto begin = m_data.begin() + static_cast<std::ptrdiff_t>(m_position);
        m_position += count;
        return Bytes(begin, begin + static_cast<std::ptrdiff_t>(count));
    }

    std::optional<std::uint32_t> tag()
    {
        const auto first = byte();
        if (!first)
            return std::nullopt;
        std::uint32_t tag = *first;
        if ((*first & 0x1FU) != 0x1FU)
            return tag;
        for (int more = 0; more < 2; ++more) {
            const auto next = byte();
            if (!next)
                return std::nullopt;
            tag = tag << 8U | *next;
            if ((*next & 0x80U) == 0)
                return tag;
        }
        return std::nullopt;
    }

    std::optional<std::size_t> length()
    {
        const auto first = byte();
        if (!first)
            return std::nullopt;
        if (*first < 0x80)
            return *first;
        const unsigned count = *first & 0x7FU;
        if (count == 0 || count > 2)
            return std::nullopt;
        std::size_t length = 0;
        for (unsigned i = 0; i < count; ++i) {
            const auto next = byte();
            if (!next)
                return std::nullopt;
            length = length << 8U | *next;
        }
        return length;
    }

private:
    const Bytes &m_data;
    std::size_t m_position = 0;
};

bool visitLevel(const Bytes &data, const std::function<void(const Tlv &)> &visit, int depth)
{
    const auto level = parseTlv(data);
    if (!level || depth > kMaxDepth)
        return false;
    for (const Tlv &element : *level) {
        if (!isConstructed(element.tag))
            visit(element);
        else if (!visitLevel(element.value, visit, depth + 1))
            return false;
    }
    return true;
}

void appendTag(Bytes &bytes, std::uint32_t tag)
{
    if (tag > 0xFFFF)
        bytes.push_back(static_cast<std::uint8_t>(tag >> 16U));
    if (tag > 0xFF)
        bytes.push_back(static_cast<std::uint8_t>(tag >> 8U));
    bytes.push_back(static_cast<std::uint8_t>(tag));
}

} // namespace

std::optional<std::vector<Tlv>> parseTlv(const Bytes &data)
{
    std::vector<Tlv> elements;
    Cursor cursor(data);
    while (!cursor.atEnd()) {
        if (cursor.peek() == 0x00) {
            cursor.skip();
            continue;
        }
        const auto tag = cursor.tag();
        const auto length = tag ? cursor.length() : std::nullopt;
        auto value = length ? cursor.bytes(*length) : std::nullopt;
        if (!value)
            return std::nullopt;
        elements.push_back({*tag, std::move(*value)});
    }
    return elements;
}

bool visitPrimitives(const Bytes &data, const std::function<void(const Tlv &)> &visit)
{
    return visitLevel(data, visit, 0);
}

bool collectPrimitives(const Bytes &data, TlvMap &elements)
{
    return visitPrimitives(data, [&](const Tlv &element) { elements.emplace(element.tag, element.value); });
}

std::optional<Bytes> findTlv(const Bytes &data, std::uint32_t tag)
{
    const auto elements = parseTlv(data);
    if (!elements)
        return std::nullopt;
    for (const Tlv &element : *elements) {
        if (element.tag == tag)
            return element.value;
    }
    return std::nullopt;
}

bool isConstructed(std::uint32_t tag)
{
    while (tag > 0xFF)
        tag >>= 8U;
    return (tag & 0x20U) != 0;
}

Bytes encodeTlv(std::uint32_t tag, const Bytes &value)
{
    Bytes bytes;
    appendTag(bytes, tag);
    if (value.size() > 0xFF)
        bytes.insert(bytes.end(), {0x82, static_cast<std::uint8_t>(value.size() >> 8U)});
    else if (value.size() > 0x7F)
        bytes.push_back(0x81);
    bytes.push_back(static_cast<std::uint8_t>(value.size()));
    bytes.insert(bytes.end(), value.begin(), value.end());
    return bytes;
}

std::optional<std::vector<DolEntry>> parseDol(const Bytes &dol)
{
    std::vector<DolEntry> entries;
    Cursor cursor(dol);
    while (!cursor.atEnd()) {
        const auto tag = cursor.tag();
        const auto length = tag ? cursor.byte() : std::nullopt;
        if (!length)
            return std::nullopt;
        entries.push_back({*tag, *length});
    }
    return entries;
}

} // namespace drivers
