// How much of the C library's heap is in use.
#pragma once

#include <cstddef>

namespace check {

/// Bytes that this process has allocated and not freed.
std::size_t allocatedBytes();

} // namespace check
