#pragma once

#include <algorithm>
#include <cstddef>

namespace Foam {
namespace zyn {

/// Puts K arrays side by side: to[K i + j] = from[j][i], i = 0..n-1. Memory is asked for ahead, since K + 1 streams are
/// more than the processor follows by itself.
template <int K>
void Interleave(double const* const (&from)[K], double* to, std::size_t n) {
  constexpr std::size_t kLine = 8, kAhead = 8 * kLine;  // doubles
  for (std::size_t first = 0; first < n; first += kLine) {
    for (int j = 0; j < K; ++j) {
      __builtin_prefetch(from[j] + first + kAhead);
      __builtin_prefetch(to + K * (first + kAhead) + kLine * j, 1);
    }
    for (std::size_t i = first; i < std::min(first + kLine, n); ++i)
      for (int j = 0; j < K; ++j) to[K * i + j] = from[j][i];
  }
}

}  // namespace zyn
}  // namespace Foam
