#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>

namespace Foam {
namespace zyn {

constexpr std::size_t kLargePage = std::size_t{1} << 21;  // bytes; 2 MB on the usual processors

/// Asks for large pages for the part of a block that whole ones fit in, before it is first written. Fewer first touches
/// and fewer address translations then: a gradient of a million cells walks through more than ten arrays at once. It is
/// advice, and nothing depends on whether the system takes it.
inline void AdviseLargePages(void* block, std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  auto const begin = reinterpret_cast<std::uintptr_t>(block);
  std::uintptr_t const first = (begin + kLargePage - 1) / kLargePage * kLargePage;
  std::uintptr_t const end = (begin + bytes) / kLargePage * kLargePage;
  if (first < end) ::madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#endif
}

}  // namespace zyn
}  // namespace Foam
