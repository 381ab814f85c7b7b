#pragma once

#include "foundation/Processor.h"

#if ZYN_HAS_TARGETS
#include <immintrin.h>

/// @file
/// Arithmetic on four numbers side by side, for functions that are compiled for AVX2. Each number goes through exactly the
/// operations that it would go through alone, so the stored numbers are the same.

/// What of this kind a function needs to be inlined into another one for AVX2.
#define ZYN_INLINE_AVX2 ZYN_TARGET_AVX2 __attribute__((always_inline)) inline

namespace four_doubles {

typedef __m256d Four;

ZYN_INLINE_AVX2 Four At(double const* x) { return _mm256_loadu_pd(x); }
ZYN_INLINE_AVX2 void StoreAt(double* x, Four v) { _mm256_storeu_pd(x, v); }
ZYN_INLINE_AVX2 Four Same(double x) { return _mm256_set1_pd(x); }
ZYN_INLINE_AVX2 Four Of(double a, double b, double c, double d) { return _mm256_setr_pd(a, b, c, d); }

/// x < y ? x : y, and x > y ? x : y; ties and NaNs give the second.
ZYN_INLINE_AVX2 Four Lesser(Four x, Four y) { return _mm256_min_pd(x, y); }
ZYN_INLINE_AVX2 Four Greater(Four x, Four y) { return _mm256_max_pd(x, y); }

/// Of each number, x if the sign of `chosen` is negative and y otherwise.
ZYN_INLINE_AVX2 Four Either(Four chosen, Four x, Four y) { return _mm256_blendv_pd(y, x, chosen); }

/// The i-th numbers of a, b, c, d become the i-th of the four.
ZYN_INLINE_AVX2 void Transpose(Four& a, Four& b, Four& c, Four& d) {
  Four const ab02 = _mm256_unpacklo_pd(a, b), ab13 = _mm256_unpackhi_pd(a, b);
  Four const cd02 = _mm256_unpacklo_pd(c, d), cd13 = _mm256_unpackhi_pd(c, d);
  a = _mm256_permute2f128_pd(ab02, cd02, 0x20);
  b = _mm256_permute2f128_pd(ab13, cd13, 0x20);
  c = _mm256_permute2f128_pd(ab02, cd02, 0x31);
  d = _mm256_permute2f128_pd(ab13, cd13, 0x31);
}

}  // namespace four_doubles
#endif
