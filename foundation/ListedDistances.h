#pragma once

#include "foundation/DQVector.h"

/// @file
/// Distances from one point to listed others, two at a time: such lists are what a search in a tree finds.

/// out[k] = Result of |from - points[ids[k]]|^2, k in 0..n-1.
template <typename Result>
void ForListed(DQVector const* points, int const* ids, int n, DQVector const& from, Result result,
               double* out) {
  int k = 0;
  for (; k + 1 < n; k += 2) {
    DQVector const &p = points[ids[k]], &q = points[ids[k + 1]];
    TwoDoubles const two = result(SquaredLength(TwoDQVectors{
        TwoDoubles{p.x, q.x} - from.x, TwoDoubles{p.y, q.y} - from.y, TwoDoubles{p.z, q.z} - from.z}));
    out[k] = two[0];
    out[k + 1] = two[1];
  }
  if (k < n) out[k] = result(SquaredLength(OffsetBetween(from, points[ids[k]])));
}

/// @param[in]  points     by id
/// @param[in]  ids        [0..n-1]
/// @param[out] distances  [0..n-1]
inline void MeasureListed(DQVector const* points, int const* ids, int n, DQVector const& from,
                          double* distances) {
  ForListed(
      points, ids, n, from, [](auto r2) { return SquareRoot(r2); }, distances);
}

/// The same without the roots.
inline void MeasureSquaresListed(DQVector const* points, int const* ids, int n, DQVector const& from,
                                 double* squares) {
  ForListed(
      points, ids, n, from, [](auto r2) { return r2; }, squares);
}
