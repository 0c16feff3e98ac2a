#pragma once

#include <cstdint>

/// Heap allocations by operator new in this process so far, including the library's: the program's
/// operator replaces the standard one in all shared objects that it loads. Any thread.
std::uint64_t countAllocations();
