#pragma once

#include <cmath>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// Two numbers side by side, in one register if the processor has registers for two. Each goes through exactly the
/// operations that it would go through alone, so the results are the same.
typedef double TwoDoubles __attribute__((vector_size(16)));

inline TwoDoubles LoadTwo(double const* from) {
  TwoDoubles two;
  std::memcpy(&two, from, sizeof two);
  return two;
}

inline void StoreTwo(TwoDoubles two, double* to) { std::memcpy(to, &two, sizeof two); }

inline double SquareRoot(double x) { return std::sqrt(x); }

/// Compilers would not merge the two roots into one operation, because a root may have to set errno.
inline TwoDoubles SquareRoot(TwoDoubles x) {
#if defined(__SSE2__)
  return _mm_sqrt_pd(x);
#else
  return TwoDoubles{std::sqrt(x[0]), std::sqrt(x[1])};
#endif
}
