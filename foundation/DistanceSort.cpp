#include "foundation/DistanceSort.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace {

constexpr int kShort = 48;  // up to this length, inserting one after the other is the fastest

bool AnyIsNaN(double const* distances, int n) {
  return std::any_of(distances, distances + n, [](double distance) { return std::isnan(distance); });
}

// For distances without an order, which some NaN leaves. A pass without an exchange is the last.
void BubbleSort(int* ids, double* distances, int n) {
  bool exchanged = true;
  for (int end = n - 1; end > 0 && exchanged; --end) {
    exchanged = false;
    for (int k = 0; k < end; ++k) {
      if (!(distances[k] > distances[k + 1])) continue;
      std::swap(distances[k], distances[k + 1]);
      std::swap(ids[k], ids[k + 1]);
      exchanged = true;
    }
  }
}

// Puts one more among the first nSorted, which are sorted with equal ones in their order. Drops the last if that
// makes more than nKept.
void Insert(int* ids, double* distances, int id, double distance, int nSorted, int nKept) {
  int k = nSorted;
  if (nSorted == nKept) {
    if (!(distance < distances[nSorted - 1])) return;
    --k;
  }
  for (; k > 0 && distances[k - 1] > distance; --k) {
    distances[k] = distances[k - 1];
    ids[k] = ids[k - 1];
  }
  distances[k] = distance;
  ids[k] = id;
}

// Brings those that may be among the nKept nearest to the front, in their order. If most of a list is dropped, one
// look at each entry is cheaper than sorting it in. A few samples estimate how far the nKept nearest reach.
// @return their number
int DropFarOnes(int* ids, double* distances, int n, int nKept) {
  constexpr int kSamples = 16;
  if (n < 2 * kSamples || n / 2 < nKept) return n;
  int const stride = n / kSamples;
  double samples[kSamples];
  for (int s = 0; s < kSamples; ++s) samples[s] = distances[s * stride];
  std::sort(samples, samples + kSamples);
  for (int s = nKept / stride + 1; s < kSamples; s += 2) {
    double const bound = samples[s];
    auto const isNear = [bound](double distance) { return distance <= bound; };
    auto const nNear = static_cast<int>(std::count_if(distances, distances + n, isNear));
    if (nNear < nKept) continue;
    for (int k = 0, at = 0; at < nNear; ++k) {
      distances[at] = distances[k];
      ids[at] = ids[k];
      at += isNear(distances[at]) ? 1 : 0;
    }
    return nNear;
  }
  return n;
}

}  // namespace

void DistanceSort::Sort(int* ids, double* distances, int n) { SortNearest(ids, distances, n, n); }

void DistanceSort::SortNearest(int* ids, double* distances, int n, int nKept) {
  if (n < 2 || nKept < 1) return;
  if (AnyIsNaN(distances, n)) {
    BubbleSort(ids, distances, n);
    return;
  }
  n = DropFarOnes(ids, distances, n, nKept);
  if (nKept <= kShort) {
    for (int k = 1; k < n; ++k) Insert(ids, distances, ids[k], distances[k], std::min(k, nKept), nKept);
  } else {
    SortByPosition(ids, distances, n);
  }
}

void DistanceSort::SortByPosition(int* ids, double* distances, int n) {
  entries_.clear();
  for (int k = 0; k < n; ++k) entries_.push_back({distances[k], k, ids[k]});
  std::sort(entries_.begin(), entries_.end(), [](Entry const& a, Entry const& b) {
    return a.distance < b.distance || (a.distance == b.distance && a.position < b.position);
  });
  for (int k = 0; k < n; ++k) {
    Entry const& entry = entries_[static_cast<std::size_t>(k)];
    distances[k] = entry.distance;
    ids[k] = entry.id;
  }
}
