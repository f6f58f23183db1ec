// The bytes of a fuzzer's input as a stream of small values. What lies behind the end reads as zeros, so that every
// input means something.
#pragma once

#include "drivers/core/bytes.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

class Input {
public:
    /// `data` outlives this.
    Input(const std::uint8_t *data, std::size_t size) : m_next(data), m_end(data + size) {}

    bool atEnd() const { return m_next == m_end; }

    std::uint8_t byte() { return atEnd() ? std::uint8_t{0} : *m_next++; }

    /// Least significant byte first, as long as the type.
    template <class Number>
    Number number()
    {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < sizeof(Number); ++i)
            value |= static_cast<std::uint64_t>(byte()) << (8 * i);
        return static_cast<Number>(value);
    }

    /// A length of one byte, or FF and a length of two, and that many bytes or as many as there are.
    drivers::Bytes bytes()
    {
        constexpr std::uint8_t kLong = 0xFF;
        std::size_t length = byte();
        if (length == kLong)
            length = number<std::uint16_t>();
        length = std::min(length, static_cast<std::size_t>(m_end - m_next));
        const std::uint8_t *const begin = m_next;
        m_next += length;
        return {begin, m_next};
    }

    std::string text()
    {
        const drivers::Bytes raw = bytes();
        return {raw.begin(), raw.end()};
    }

private:
    const std::uint8_t *m_next;
    const std::uint8_t *m_end;
};

} // namespace fuzz
