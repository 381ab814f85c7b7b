#pragma once

#include <vector>

/// Sorts distances and the ids that belong to them. The result is that of a bubble sort with strict comparisons:
/// ascending, with equal distances in their order. Distances that are not numbers end up where such a sort leaves
/// them.
class DistanceSort {
 public:
  /// @param[in,out] ids,distances  [0..n-1]
  void Sort(int* ids, double* distances, int n);

  /// Brings the `nKept` nearest to the front, as Sort does; what stands behind them is unspecified.
  /// @param[in,out] ids,distances  [0..n-1]
  /// @param         nKept          at most n
  void SortNearest(int* ids, double* distances, int n, int nKept);

 private:
  struct Entry {
    double distance;
    int position, id;
  };

  void SortByPosition(int* ids, double* distances, int n);

  std::vector<Entry> entries_;  // grows to the longest list
};
