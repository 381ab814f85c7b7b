#include "rbf_ib/DistanceSort.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
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

void DistanceSort::Sort(int* ids, double* distances, int n, int nWanted) {
  if (n <= kLargestUnsorted) return;
  if (std::any_of(distances, distances + n, [](double d) { return std::isnan(d); })) {
    MakePasses(ids, distances, n);
    return;
  }
  entries_.clear();
  for (int j = 0; j < n; ++j) entries_.push_back({distances[j], j, ids[j]});

  // The first two always, as they may have to change places.
  std::ptrdiff_t const nSorted = std::clamp(nWanted, kLargestUnsorted, n);
  auto const begin = entries_.begin(), endOfSorted = begin + nSorted;
  auto const isLess = [](Entry const& a, Entry const& b) {
    return a.distance != b.distance ? a.distance < b.distance : a.place < b.place;
  };
  if (endOfSorted != entries_.end()) std::nth_element(begin, endOfSorted, entries_.end(), isLess);
  std::sort(begin, endOfSorted, isLess);
  if (entries_[0].place == n - 1) std::swap(entries_[0], entries_[1]);

  for (int j = 0; j < n; ++j) {
    distances[j] = entries_[static_cast<std::size_t>(j)].distance;
    ids[j] = entries_[static_cast<std::size_t>(j)].id;
  }
}
