// Heap allocations counted per thread: molra_bench replaces the global operator new, through
// which the kit, the simulated transport and the C++ library all allocate.
#pragma once

#include <cstdint>

namespace molra::bench {

// operator new calls made on the calling thread so far.
std::uint64_t ThreadAllocations();

}  // namespace molra::bench
