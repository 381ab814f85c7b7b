#include "rbf_ib/ShortenedSort.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int kLargestUnsorted = 2;

void MakePasses(int* ids, double* distances, int n) {
  for (int last = n - 1; last >= kLargestUnsorted; --last) {
    for (int j = 0; j < last; ++j) {
      if (!(distances[j] > distances[j + 1])) continue;
      std::swap(distances[j], distances[j + 1]);
      std::swap(ids[j], ids[j + 1]);
    }
  }
}

}  // namespace

void ShortenedSort::Sort(int* ids, double* distances, int n, int nWanted) {
  if (n <= kLargestUnsorted) return;
  if (std::any_of(distances, distances + n, [](double d) { return std::isnan(d); })) {
    MakePasses(ids, distances, n);
    return;
  }
  double const last = distances[n - 1];
  bool const smallestIsLast =
      std::all_of(distances, distances + n - 1, [last](double d) { return d > last; });
  // At least the first two, since they may have to change places.
  complete_.SortNearest(ids, distances, n, std::clamp(nWanted, kLargestUnsorted, n));
  if (!smallestIsLast) return;
  std::swap(distances[0], distances[1]);
  std::swap(ids[0], ids[1]);
}
