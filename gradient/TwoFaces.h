#pragma once

#include <cstdint>
#include <cstring>

#include "foundation/TwoDoubles.h"
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// @file
/// Arithmetic on two faces or two cells side by side, in one register if the processor has registers for two. Each goes
/// through exactly the operations that it would go through alone, so the stored numbers are the same.

namespace two_faces {

/// A number at each of two faces, or in each of two cells.
typedef TwoDoubles Two;

/// The cells on one side of two faces.
struct TwoCells {
  int first, second;
};

/// Two neighbouring elements of an array, aligned or not.
typedef double TwoInArray __attribute__((vector_size(16), aligned(8), may_alias));

/// x[i], or x[i] and x[i+1].
template <class Value>
Value At(double const* x, int i);
template <>
inline double At<double>(double const* x, int i) {
  return x[i];
}
template <>
inline Two At<Two>(double const* x, int i) {
  return *reinterpret_cast<TwoInArray const*>(x + i);
}
inline void StoreAt(double* x, int i, double v) { x[i] = v; }
inline void StoreAt(double* x, int i, Two v) { *reinterpret_cast<TwoInArray*>(x + i) = v; }

/// x in one cell, or in two.
inline double InCells(double const* x, int cell) { return x[cell]; }
inline Two InCells(double const* x, TwoCells cells) { return Two{x[cells.first], x[cells.second]}; }

/// x < y ? x : y, and x > y ? x : y; ties and NaNs give the second. SSE2 has an instruction for each. Compilers miss
/// them where several comparisons follow each other, and branch on single numbers instead; with field values,
/// such branches are often mispredicted.
#if defined(__SSE2__)
inline Two Lesser(Two x, Two y) { return _mm_min_pd(x, y); }
inline Two Greater(Two x, Two y) { return _mm_max_pd(x, y); }
inline double Lesser(double x, double y) { return _mm_cvtsd_f64(_mm_min_sd(_mm_set_sd(x), _mm_set_sd(y))); }
inline double Greater(double x, double y) { return _mm_cvtsd_f64(_mm_max_sd(_mm_set_sd(x), _mm_set_sd(y))); }
#else
inline Two Lesser(Two x, Two y) { return x < y ? x : y; }
inline Two Greater(Two x, Two y) { return x > y ? x : y; }
inline double Lesser(double x, double y) { return x < y ? x : y; }
inline double Greater(double x, double y) { return x > y ? x : y; }
#endif

/// Whether a number, or at least one of two, is exactly zero. The sign of the zero does not matter.
inline bool AnyZero(double x) { return x == 0.0; }
#if defined(__SSE2__)
inline bool AnyZero(Two x) { return _mm_movemask_pd(_mm_cmpeq_pd(x, Two{0.0, 0.0})) != 0; }
#else
inline bool AnyZero(Two x) { return x[0] == 0.0 || x[1] == 0.0; }
#endif

/// Whether any of p[0..7], q[0..7] is above the limit.
inline bool AnyOfEightAbove(int limit, int const* p, int const* q) {
  typedef int Four __attribute__((vector_size(16)));
  Four v[4];
  std::memcpy(&v[0], p, sizeof v[0]);
  std::memcpy(&v[1], p + 4, sizeof v[1]);
  std::memcpy(&v[2], q, sizeof v[2]);
  std::memcpy(&v[3], q + 4, sizeof v[3]);
  Four const limits{limit, limit, limit, limit};
  Four const above = ((v[0] > limits) | (v[1] > limits)) | ((v[2] > limits) | (v[3] > limits));
  std::int64_t halves[2];
  std::memcpy(halves, &above, sizeof halves);
  return (halves[0] | halves[1]) != 0;
}

}  // namespace two_faces
