// Arguments of calls in memory of exactly their size, so that AddressSanitizer sees the first byte past them.
#pragma once

#include "tests/fuzz/require.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace fuzz {

/// `size` zero bytes, as a caller hands a driver its reply buffers.
class ExactBuffer {
public:
    explicit ExactBuffer(std::size_t size) : m_size(size), m_memory(std::make_unique<char[]>(size)) {}

    char *data() { return m_memory.get(); }
    std::size_t size() const { return m_size; }

    /// The characters before the first NUL, which has to be there.
    std::size_t textLength() const
    {
        const std::size_t length = ::strnlen(m_memory.get(), m_size);
        require(length < m_size, "a reply ends with a NUL inside its buffer");
        return length;
    }

    bool untouched() const
    {
        return std::all_of(m_memory.get(), m_memory.get() + m_size, [](char byte) { return byte == 0; });
    }

private:
    std::size_t m_size;
    std::unique_ptr<char[]> m_memory;
};

/// A text up to its first NUL and that NUL.
inline ExactBuffer exactText(std::string_view text)
{
    text = text.substr(0, text.find('\0'));
    ExactBuffer buffer(text.size() + 1);
    text.copy(buffer.data(), text.size());
    return buffer;
}

/// Characters without a NUL behind them.
inline ExactBuffer exactCharacters(std::string_view text)
{
    ExactBuffer buffer(text.size());
    text.copy(buffer.data(), text.size());
    return buffer;
}

} // namespace fuzz
