#pragma once

#include <cmath>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// Two numbers side by side, in one register where the processor has such. Each takes exactly the operations that
/// it would take alone, so results do not depend on it.
typedef double TwoDoubles __attribute__((vector_size(16)));

inline double SquareRoot(double x) { return std::sqrt(x); }

/// (Compilers do not make one operation of the two roots, since a root may have to set errno.)
inline TwoDoubles SquareRoot(TwoDoubles x) {
#if defined(__SSE2__)
  return _mm_sqrt_pd(x);
#else
  return TwoDoubles{std::sqrt(x[0]), std::sqrt(x[1])};
#endif
}
