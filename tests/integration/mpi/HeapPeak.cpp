#include "HeapPeak.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::ptrdiff_t> nBytes{0}, mostBytes{0};

}  // namespace

// The other forms call these two; those for large alignments stay outside.
void* operator new(std::size_t size) {
  void* const block = std::malloc(size > 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  std::ptrdiff_t const now = nBytes += static_cast<std::ptrdiff_t>(malloc_usable_size(block));
  std::ptrdiff_t most = mostBytes;
  while (now > most && !mostBytes.compare_exchange_weak(most, now)) {
  }
  return block;
}

void operator delete(void* block) noexcept {
  nBytes -= static_cast<std::ptrdiff_t>(malloc_usable_size(block));
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace reference_host::test {

HeapPeak::HeapPeak() : before_(nBytes) { mostBytes = before_; }

double HeapPeak::Bytes() const { return static_cast<double>(mostBytes - before_); }

}  // namespace reference_host::test
