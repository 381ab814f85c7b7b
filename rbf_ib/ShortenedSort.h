#pragma once

#include "foundation/DistanceSort.h"

/// Sorts identities by distance as Dis_Sorting of the point operator does, without its quadratic cost.
///
/// Dis_Sorting makes n-2 passes of a bubble sort over n entries, each one pair shorter than the pass before; a
/// complete sort makes n-1. After p passes the p largest entries stand at the end in order, so n-2 passes leave
/// everything in order except, possibly, the first two. Let a be the smallest entry; of equal ones the first counts as
/// smaller, as the strict comparison treats them. Everything left of a is larger, so a pass carries something past a:
/// a moves left by exactly one place in each pass until it stands first. From place q it needs q passes, and n-2 are
/// too few if and only if q = n-1. Then a ends in the second place, and the second smallest, which it no longer
/// passed, in the first.
///
/// So the result is that of a stable sort, with the first two exchanged if the smallest distance stood at the last
/// place and nowhere else. For n up to 2 nothing is sorted. Distances that are not numbers have no order; with one of
/// them in the list, the passes are made one by one.
class ShortenedSort {
 public:
  /// Brings the entries that belong to the places 0..nWanted-1 there; the order of the rest is unspecified.
  /// @param[in,out] ids,distances  [0..n-1]
  void Sort(int* ids, double* distances, int n, int nWanted);

 private:
  DistanceSort complete_;
};
