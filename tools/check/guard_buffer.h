// Memory whose overrun shows: the last byte of the buffer is followed by a page that nobody may touch.
#pragma once

#include <cstddef>
#include <string>

namespace check {

class GuardBuffer {
public:
    /// `size` bytes, zero-filled. `label` names the buffer when a page around it is touched. Throws std::bad_alloc.
    GuardBuffer(std::size_t size, const std::string &label);
    ~GuardBuffer();
    GuardBuffer(const GuardBuffer &) = delete;
    GuardBuffer &operator=(const GuardBuffer &) = delete;

    char *data() const { return m_data; }
    std::size_t size() const { return m_size; }

    /// Whether the bytes between the page's start and the buffer are as they were.
    bool startIntact() const;

private:
    std::size_t m_size;
    std::size_t m_mapped = 0;
    char *m_pages = nullptr;
    char *m_data = nullptr;
};

/// What to say of a fault at `address`: the text of the buffer whose guard page it lies in, or null. May be called in a
/// signal handler.
const char *guardFault(const void *address) noexcept;

} // namespace check
