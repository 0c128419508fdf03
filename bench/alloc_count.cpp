#include "alloc_count.h"

#include <cstdlib>
#include <new>

namespace molra::bench {
namespace {
thread_local std::uint64_t t_allocations = 0;

void* Counted(std::size_t size) {
  ++t_allocations;
  return std::malloc(size == 0 ? 1 : size);
}
}  // namespace

std::uint64_t ThreadAllocations() { return t_allocations; }

}  // namespace molra::bench

// The library's operator delete frees with free(), which these allocations match.
void* operator new(std::size_t size) {
  if (void* p = molra::bench::Counted(size)) return p;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return molra::bench::Counted(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return molra::bench::Counted(size);
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
