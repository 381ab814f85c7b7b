#include "foundation/ZeroedBlock.h"

#include <cstdint>
#include <cstdlib>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace {

#if defined(__linux__)

constexpr std::uintptr_t kLargePage = std::uintptr_t{1} << 21;

// Asks for those large pages that lie wholly in the block. It is a hint: a system without large pages uses small
// ones.
void AskForLargePages(void* block, std::size_t nByte) {
  std::uintptr_t const address = reinterpret_cast<std::uintptr_t>(block);
  std::size_t const before = static_cast<std::size_t>(-address % kLargePage);
  if (nByte < before + kLargePage) return;
  std::size_t const length = (nByte - before) / kLargePage * kLargePage;
  static_cast<void>(::madvise(static_cast<char*>(block) + before, length, MADV_HUGEPAGE));
}

// A block of whole large pages begins with one.
void* AllocateRaw(std::size_t nByte) {
  bool const isWhole = nByte >= kLargePage && nByte % kLargePage == 0;
  return isWhole ? std::aligned_alloc(kLargePage, nByte) : std::malloc(nByte);
}

#else

void AskForLargePages(void*, std::size_t) {}

void* AllocateRaw(std::size_t nByte) { return std::malloc(nByte); }

#endif

template <typename Allocate>
void* NewBlock(std::size_t nByte, Allocate allocate) {
  for (;;) {
    if (void* const block = allocate(nByte)) {
      AskForLargePages(block, nByte);
      return block;
    }
    // Lets the new-handler make room, or fails as every other allocation does.
    ::operator delete(::operator new(nByte));
  }
}

}  // namespace

void* NewZeroedBlock(std::size_t nByte) {
  return NewBlock(nByte, [](std::size_t n) { return std::calloc(n, 1); });
}

void* NewRawBlock(std::size_t nByte) { return NewBlock(nByte, AllocateRaw); }

void FreeZeroedBlock(void* block) { std::free(block); }
