#include "tests/support/watch/AllocationCount.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

// All forms of the global operators are replaced, also those that would forward to another: a sanitizer's
// runtime has its own of each, and memory must come from and go back to the same family.

// The linker sends the library's own calls of these here, see tests/CMakeLists.txt.
extern "C" {
void* __real_malloc(std::size_t size);                                // NOLINT(bugprone-reserved-identifier)
void* __wrap_malloc(std::size_t size) noexcept;                       // NOLINT(bugprone-reserved-identifier)
void* __real_aligned_alloc(std::size_t alignment, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void* __wrap_aligned_alloc(std::size_t alignment,
                           std::size_t size) noexcept;              // NOLINT(bugprone-reserved-identifier)
void* __real_calloc(std::size_t count, std::size_t size);           // NOLINT(bugprone-reserved-identifier)
void* __wrap_calloc(std::size_t count, std::size_t size) noexcept;  // NOLINT(bugprone-reserved-identifier)
void __real_free(void* memory);                                     // NOLINT(bugprone-reserved-identifier)
void __wrap_free(void* memory) noexcept;                            // NOLINT(bugprone-reserved-identifier)
}

namespace {

std::atomic<long> allocations{0};
std::atomic<long> releases{0};
std::atomic<long> blocks{0};
std::atomic<long> untilFailure{0};  // 0: none is to come
std::atomic<bool> failed{false};

bool Fails() noexcept {
  if (untilFailure == 0 || --untilFailure != 0) return false;
  failed = true;
  return true;
}

void* Allocate(std::size_t size) noexcept {
  if (Fails()) return nullptr;
  ++allocations;
  return __real_malloc(size == 0 ? 1 : size);
}

void* AllocateAligned(std::size_t size, std::align_val_t alignment) noexcept {
  if (Fails()) return nullptr;
  ++allocations;
  auto const boundary = static_cast<std::size_t>(alignment);
  return __real_aligned_alloc(boundary, (size / boundary + 1) * boundary);
}

void* OrThrow(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void Release(void* memory) noexcept {
  if (memory == nullptr) return;
  ++releases;
  __real_free(memory);
}

}  // namespace

namespace zyn_test {

long Allocations() { return allocations; }

long LiveAllocations() { return allocations - releases; }

long LiveBlocks() { return blocks; }

FailingAllocation::FailingAllocation(long n) {
  failed = false;
  untilFailure = n;
}

FailingAllocation::~FailingAllocation() { untilFailure = 0; }

bool FailingAllocation::Happened() const { return failed; }

}  // namespace zyn_test

namespace {

// Without a block the library asks operator new for as much, to have it fail as everything else does.
template <typename Allocate>
void* NewBlock(Allocate allocate) noexcept {
  if (Fails()) {
    untilFailure = 1;
    return nullptr;
  }
  ++blocks;
  return allocate();
}

}  // namespace

void* __wrap_malloc(std::size_t size) noexcept {
  return NewBlock([size] { return __real_malloc(size); });
}

void* __wrap_aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return NewBlock([alignment, size] { return __real_aligned_alloc(alignment, size); });
}

void* __wrap_calloc(std::size_t count, std::size_t size) noexcept {
  return NewBlock([count, size] { return __real_calloc(count, size); });
}

void __wrap_free(void* memory) noexcept {
  if (memory != nullptr) --blocks;
  __real_free(memory);
}

using Size = std::size_t;
using Align = std::align_val_t;
using NoThrow = std::nothrow_t;

void* operator new(Size n) { return OrThrow(Allocate(n)); }
void* operator new[](Size n) { return OrThrow(Allocate(n)); }
void* operator new(Size n, NoThrow const&) noexcept { return Allocate(n); }
void* operator new[](Size n, NoThrow const&) noexcept { return Allocate(n); }
void* operator new(Size n, Align a) { return OrThrow(AllocateAligned(n, a)); }
void* operator new[](Size n, Align a) { return OrThrow(AllocateAligned(n, a)); }
void* operator new(Size n, Align a, NoThrow const&) noexcept { return AllocateAligned(n, a); }
void* operator new[](Size n, Align a, NoThrow const&) noexcept { return AllocateAligned(n, a); }

void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, Size) noexcept { Release(p); }
void operator delete[](void* p, Size) noexcept { Release(p); }
void operator delete(void* p, NoThrow const&) noexcept { Release(p); }
void operator delete[](void* p, NoThrow const&) noexcept { Release(p); }
void operator delete(void* p, Align) noexcept { Release(p); }
void operator delete[](void* p, Align) noexcept { Release(p); }
void operator delete(void* p, Size, Align) noexcept { Release(p); }
void operator delete[](void* p, Size, Align) noexcept { Release(p); }
void operator delete(void* p, Align, NoThrow const&) noexcept { Release(p); }
void operator delete[](void* p, Align, NoThrow const&) noexcept { Release(p); }
