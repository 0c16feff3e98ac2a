#pragma once

#include <cstdint>

/// Heap allocations by operator new of this process so far, the library's own included: the
/// program's operator takes the place of the standard one in all that it loads. Any thread.
std::uint64_t countAllocations();
