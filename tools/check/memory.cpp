#include "tools/check/memory.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define UNIFOLD_HEAP_OF_SANITIZER
#endif
#endif

#ifdef UNIFOLD_HEAP_OF_SANITIZER
#include <sanitizer/allocator_interface.h>
#else
#include <malloc.h>
#endif

namespace check {

std::size_t allocatedBytes()
{
#ifdef UNIFOLD_HEAP_OF_SANITIZER
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
#endif
}

} // namespace check
