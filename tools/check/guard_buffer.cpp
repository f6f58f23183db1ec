#include "tools/check/guard_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>

namespace check {

namespace {

constexpr char kCanary = '\x5A';

/// What the signal handler reads: no allocation, no lock. One check has but a few buffers at a time.
struct Guarded {
    std::uintptr_t begin = 0; ///< of the mapping, guard pages included; 0: free
    std::uintptr_t data = 0;
    std::uintptr_t end = 0;
    std::array<char, 160> past{};
    std::array<char, 160> before{};
};

std::array<Guarded, 64> &guardedBuffers()
{
    static std::array<Guarded, 64> table;
    return table;
}

std::uintptr_t number(const void *address)
{
    return reinterpret_cast<std::uintptr_t>(address);
}

std::size_t pageSize()
{
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

} // namespace

GuardBuffer::GuardBuffer(std::size_t size, const std::string &label) : m_size(size)
{
    const std::size_t page = pageSize();
    const std::size_t inner = std::max<std::size_t>((size + page - 1) / page, 1) * page;
    m_mapped = inner + 2 * page;
    void *const pages = mmap(nullptr, m_mapped, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED)
        throw std::bad_alloc();
    m_pages = static_cast<char *>(pages);
    if (mprotect(m_pages + page, inner, PROT_READ | PROT_WRITE) != 0) {
        munmap(m_pages, m_mapped);
        throw std::bad_alloc();
    }
    m_data = m_pages + page + inner - size;
    std::memset(m_pages + page, kCanary, inner - size);

    for (Guarded &entry : guardedBuffers()) {
        if (entry.begin != 0)
            continue;
        entry.data = number(m_data);
        entry.end = number(m_pages) + m_mapped;
        std::snprintf(entry.past.data(), entry.past.size(), "touched memory past the %zu bytes of %s", size,
                      label.c_str());
        std::snprintf(entry.before.data(), entry.before.size(), "touched memory before %s", label.c_str());
        entry.begin = number(m_pages);
        break;
    }
}

GuardBuffer::~GuardBuffer()
{
    for (Guarded &entry : guardedBuffers()) {
        if (entry.begin == number(m_pages))
            entry.begin = 0;
    }
    munmap(m_pages, m_mapped);
}

bool GuardBuffer::startIntact() const
{
    return std::all_of(m_pages + pageSize(), m_data, [](char c) { return c == kCanary; });
}

const char *guardFault(const void *address) noexcept
{
    const std::uintptr_t at = number(address);
    for (const Guarded &entry : guardedBuffers()) {
        if (entry.begin != 0 && at >= entry.begin && at < entry.end)
            return at < entry.data ? entry.before.data() : entry.past.data();
    }
    return nullptr;
}

} // namespace check
