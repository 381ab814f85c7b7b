#include "tests/unit/gradient/AllocationCount.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

// All forms of the global operators are replaced, also those that would forward to another: a sanitizer's
// runtime has its own of each, and memory must come from and go back to the same family.

namespace {

std::atomic<long> allocations{0};
std::atomic<long> releases{0};

void* Allocate(std::size_t size) noexcept {
  ++allocations;
  return std::malloc(size == 0 ? 1 : size);
}

void* AllocateAligned(std::size_t size, std::align_val_t alignment) noexcept {
  ++allocations;
  const auto boundary = static_cast<std::size_t>(alignment);
  return std::aligned_alloc(boundary, (size / boundary + 1) * boundary);
}

void* OrThrow(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void Release(void* memory) noexcept {
  if (memory == nullptr) return;
  ++releases;
  std::free(memory);
}

}  // namespace

namespace gradient_test {

long Allocations() { return allocations; }

long LiveAllocations() { return allocations - releases; }

}  // namespace gradient_test

using Size = std::size_t;
using Align = std::align_val_t;
using NoThrow = std::nothrow_t;

void* operator new(Size n) { return OrThrow(Allocate(n)); }
void* operator new[](Size n) { return OrThrow(Allocate(n)); }
void* operator new(Size n, const NoThrow&) noexcept { return Allocate(n); }
void* operator new[](Size n, const NoThrow&) noexcept { return Allocate(n); }
void* operator new(Size n, Align a) { return OrThrow(AllocateAligned(n, a)); }
void* operator new[](Size n, Align a) { return OrThrow(AllocateAligned(n, a)); }
void* operator new(Size n, Align a, const NoThrow&) noexcept { return AllocateAligned(n, a); }
void* operator new[](Size n, Align a, const NoThrow&) noexcept { return AllocateAligned(n, a); }

void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, Size) noexcept { Release(p); }
void operator delete[](void* p, Size) noexcept { Release(p); }
void operator delete(void* p, const NoThrow&) noexcept { Release(p); }
void operator delete[](void* p, const NoThrow&) noexcept { Release(p); }
void operator delete(void* p, Align) noexcept { Release(p); }
void operator delete[](void* p, Align) noexcept { Release(p); }
void operator delete(void* p, Size, Align) noexcept { Release(p); }
void operator delete[](void* p, Size, Align) noexcept { Release(p); }
void operator delete(void* p, Align, const NoThrow&) noexcept { Release(p); }
void operator delete[](void* p, Align, const NoThrow&) noexcept { Release(p); }
