#include "PeakBytes.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> live{0}, peak{0};

void* Allocate(std::size_t size) noexcept {
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) return nullptr;
  std::size_t const now = live += malloc_usable_size(memory);
  if (now > peak) peak = now;  // MPI's own threads allocate little
  return memory;
}

void Release(void* memory) noexcept {
  if (memory == nullptr) return;
  live -= malloc_usable_size(memory);
  std::free(memory);
}

void* OrThrow(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

// Memory with an alignment of its own, which no test of files asks for, is not counted.
void* operator new(std::size_t size) { return OrThrow(Allocate(size)); }
void* operator new[](std::size_t size) { return OrThrow(Allocate(size)); }
void* operator new(std::size_t size, std::nothrow_t const&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { Release(memory); }
void operator delete[](void* memory) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t) noexcept { Release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Release(memory); }
void operator delete(void* memory, std::nothrow_t const&) noexcept { Release(memory); }
void operator delete[](void* memory, std::nothrow_t const&) noexcept { Release(memory); }

namespace reference_host::test {

std::size_t LiveBytes() { return live; }
std::size_t PeakBytes() { return peak; }
void ForgetPeak() { peak = live.load(); }

}  // namespace reference_host::test
