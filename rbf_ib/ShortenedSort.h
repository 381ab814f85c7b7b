#pragma once

#include "foundation/DistanceSort.h"

/// Sorts identities by distance as Dis_Sorting of the point operator does, without its quadratic cost.
///
/// Dis_Sorting makes n-2 passes of a bubble sort over n entries, each one pair shorter than the one before; a
/// complete sort makes n-1. After p passes the p largest entries stand at the end in order, so n-2 passes leave
/// everything in order but, possibly, the first two. Let a be the smallest entry, with the one that came first
/// counting as smaller among equals, which is how the strict comparison treats them. Everything left of a is
/// larger than a, so what a pass carries up to a goes past it: a moves left by exactly one place a pass until it
/// stands first. From place q it gets there in q passes, which are too many for n-2 passes if and only if
/// q = n-1. Then it ends in the second place and the second smallest, which it did not pass any more, in the
/// first.
///
/// So the result is that of a stable sort, with the first two exchanged if the smallest distance of all stood
/// only at the last place. Nothing is sorted for n up to 2. Distances that are not numbers have no order, and
/// with one of them the passes are made as they stand.
class ShortenedSort {
 public:
  /// Brings the entries that belong to the places 0..nWanted-1 there; what follows behind is in no promised order.
  /// @param[in,out] ids,distances  [0..n-1]
  void Sort(int* ids, double* distances, int n, int nWanted);

 private:
  DistanceSort complete_;
};
