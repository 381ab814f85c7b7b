#include "foundation/DistanceSort.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "foundation/TwoDoubles.h"

namespace {

constexpr int kShort = 48;  // up to this length, inserting one after the other is the fastest of all sorts
constexpr int kFew = 8;     // that many are inserted even faster than ranked
constexpr int kRanked = 64;

typedef long long TwoCounts __attribute__((vector_size(16)));

bool AnyIsNaN(double const* distances, int n) {
  TwoCounts any = {0, 0};
  int k = 0;
  for (; k + 1 < n; k += 2) {
    TwoDoubles const two = LoadTwo(distances + k);
    any |= two != two;  // NOLINT(misc-redundant-expression): a NaN differs from itself
  }
  return any[0] != 0 || any[1] != 0 || (k < n && std::isnan(distances[k]));
}

// ranks[k] = the place of entry k after sorting, equal ones in their order: the entries that are less, and the equal ones
// before it. Each pair is compared once, without a branch. @pre n <= kRanked, no NaN
void Rank(double const* distances, int n, int* ranks) {
  long long counts[kRanked];
  std::fill_n(counts, n, 0);
  for (int k = 0; k < n; ++k) {
    TwoDoubles const own = {distances[k], distances[k]};
    TwoCounts less = {0, 0};
    int j = k + 1;
    for (; j + 1 < n; j += 2) {
      TwoCounts const isLess = LoadTwo(distances + j) < own;  // -1 where it is
      TwoCounts after = TwoCounts{counts[j], counts[j + 1]};
      after += 1 + isLess;
      counts[j] = after[0];
      counts[j + 1] = after[1];
      less -= isLess;
    }
    counts[k] += less[0] + less[1];
    if (j < n) {
      bool const isLess = distances[j] < distances[k];
      counts[j] += isLess ? 0 : 1;
      counts[k] += isLess ? 1 : 0;
    }
  }
  for (int k = 0; k < n; ++k) ranks[k] = static_cast<int>(counts[k]);
}

// Brings the nKept nearest to the front. @pre n <= kRanked
void SortByRank(int* ids, double* distances, int n, int nKept) {
  int ranks[kRanked], sortedIds[kRanked];
  double sorted[kRanked];
  Rank(distances, n, ranks);
  for (int k = 0; k < n; ++k) {
    sorted[ranks[k]] = distances[k];
    sortedIds[ranks[k]] = ids[k];
  }
  std::copy_n(sorted, nKept, distances);
  std::copy_n(sortedIds, nKept, ids);
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
  double unsorted[kSamples], samples[kSamples];
  for (int s = 0; s < kSamples; ++s) unsorted[s] = distances[s * stride];
  int ranks[kSamples];
  Rank(unsorted, kSamples, ranks);
  for (int s = 0; s < kSamples; ++s) samples[ranks[s]] = unsorted[s];
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
  if (nKept > kFew && n <= kRanked) {
    SortByRank(ids, distances, n, nKept);
  } else if (nKept <= kShort) {
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
