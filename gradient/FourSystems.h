#pragma once

#include "gradient/FourDoubles.h"
#include "gradient/NormalEquations.h"
#if ZYN_HAS_TARGETS

/// @file
/// The elimination of NormalEquations.h for four cells side by side, with AVX2: the same operations in the same order. (A
/// function for AVX2 cannot take in those of NormalEquations.h, which are compiled without.)

namespace normal_equations {

using four_doubles::Four;

ZYN_INLINE_AVX2 bool AnyZero(Four x) {
  return _mm256_movemask_pd(_mm256_cmp_pd(x, _mm256_setzero_pd(), _CMP_EQ_OQ)) != 0;
}

/// The matrices of four cells after the elimination.
struct FourSystems {
  Four xx, xy, xz, yFactor, zFactor;
  Four yy, yz, secondFactor;  ///< yy', yz', and zy' / yy'
  Four zz;                    ///< zz"
};

/// Eliminates the matrices of the cells c..c+3. @return false if one of their pivots is zero, with nothing of use in `e`
ZYN_INLINE_AVX2 bool Eliminate(Matrices const& m, int c, FourSystems& e) {
  e.xx = _mm256_loadu_pd(m.xx + c);
  if (AnyZero(e.xx)) return false;
  e.xy = _mm256_loadu_pd(m.xy + c);
  e.xz = _mm256_loadu_pd(m.xz + c);
  e.yFactor = e.xy / e.xx;
  e.zFactor = e.xz / e.xx;
  e.yy = _mm256_loadu_pd(m.yy + c) - e.yFactor * e.xy;
  if (AnyZero(e.yy)) return false;
  Four const yz = _mm256_loadu_pd(m.yz + c);
  e.yz = yz - e.yFactor * e.xz;
  e.secondFactor = (yz - e.zFactor * e.xy) / e.yy;
  e.zz = (_mm256_loadu_pd(m.zz + c) - e.zFactor * e.xz) - e.secondFactor * e.yz;
  return !AnyZero(e.zz);
}

/// Solves the systems of the cells c..c+3 for right-hand sides of theirs.
ZYN_INLINE_AVX2 void SolveFour(FourSystems const& e, Four bx, Four by, Four bz, Vectors const& g, int c) {
  by = by - e.yFactor * bx;
  bz = (bz - e.zFactor * bx) - e.secondFactor * by;
  Four const gz = bz / e.zz;
  Four const gy = (by - gz * e.yz) / e.yy;
  Four const gx = (bx - gy * e.xy - e.xz * gz) / e.xx;
  _mm256_storeu_pd(g.x + c, gx);
  _mm256_storeu_pd(g.y + c, gy);
  _mm256_storeu_pd(g.z + c, gz);
}

}  // namespace normal_equations

#endif
