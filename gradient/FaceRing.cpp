#include "gradient/FaceRing.h"

#include <algorithm>

#include "foundation/Processor.h"

namespace {

/// The least and the greatest number of the cells of the faces first..last.
struct CellBounds {
  int least, greatest;
};

CellBounds BoundsOf(FaceGroup const& group, int first, int last) {
  CellBounds bounds{group.cv[first], group.cv[first]};
  for (int f = first; f <= last; ++f) {
    bounds.least = std::min({bounds.least, group.cv[f], group.other[f]});
    bounds.greatest = std::max({bounds.greatest, group.cv[f], group.other[f]});
  }
  return bounds;
}

/// Whether the lengths of runs of faces with the same `cv` do not repeat after any small number of runs, as far as a branch
/// that ends a run would be mispredicted often.
bool AreRunsIrregular(FaceGroup const& group, int first, int last) {
  int length[FaceRing::kRange];
  int nRun = 0;
  for (int f = first; f <= last; ++f) {
    if (f == first || group.cv[f] != group.cv[f - 1]) length[nRun++] = 0;
    ++length[nRun - 1];
  }
  constexpr int kLongestPeriod = 6;
  for (int period = 1; period <= std::min(kLongestPeriod, nRun / 2); ++period) {
    int nDifferent = 0;
    for (int run = period; run < nRun; ++run) nDifferent += length[run] != length[run - period] ? 1 : 0;
    if (nDifferent * 4 < nRun) return false;
  }
  return nRun > 1;
}

}  // namespace

void FaceRing::Release() {
  nRange_ = 0;
  completeBelow_.reset();
  isIrregular_.reset();
  marks_.reset();
  memory_.reset();
  records_ = nullptr;
}

void FaceRing::ClearMarks() { std::fill_n(marks_.get(), MarkWords(), std::uint64_t{0}); }

void FaceRing::Prepare(FaceGroup const& inner, int nCell) {
  Release();
  if (!processor::HasAvx2() || inner.count < 1 || nCell < 1 || inner.cv == nullptr || inner.other == nullptr)
    return;
  int const nRange = (inner.count - 1) / kRange + 1;
  std::size_t const size = static_cast<std::size_t>(nRange);
  completeBelow_.reset(new int[size]);
  isIrregular_.reset(new bool[size]);
  std::unique_ptr<int[]> const greatest(new int[size]);
  nCell_ = nCell;
  marks_.reset(new std::uint64_t[static_cast<std::size_t>(MarkWords())]);

  int below = nCell + 1;
  for (int r = nRange - 1; r >= 0; --r) {
    int const first = r * kRange + 1, last = std::min(r * kRange + kRange, inner.count);
    CellBounds const bounds = BoundsOf(inner, first, last);
    isIrregular_[r] = AreRunsIrregular(inner, first, last);
    below = std::min(below, bounds.least);
    completeBelow_[r] = below;
    greatest[r] = bounds.greatest;
    // Not a mesh, and no reason to fail: the walk without a ring does with it what it does.
    if (bounds.least < 1 || bounds.greatest > nCell) return Release();
  }
  // Up to three complete cells wait for the fourth that leaves with them.
  int window = 2 * kTogether;
  for (int r = 0, entered = 0; r < nRange; ++r) {
    entered = std::max(entered, greatest[r]);
    window = std::max(window, entered - completeBelow_[r] + 1 + kTogether);
  }
  std::size_t capacity = 64;
  while (capacity < static_cast<std::size_t>(window)) capacity *= 2;
  if (capacity > kGreatestCapacity) return Release();

  constexpr std::size_t kLine = 8;  // doubles in a cache line
  std::size_t const nDouble = std::min(capacity * kGreatestRecord, kMostDoubles);
  memory_.reset(new double[nDouble + kLine]);
  void* start = memory_.get();
  std::size_t space = (nDouble + kLine) * sizeof(double);
  records_ = static_cast<double*>(std::align(kLine * sizeof(double), nDouble * sizeof(double), start, space));
  capacity_ = static_cast<int>(capacity);
  nFace_ = inner.count;
  nRange_ = nRange;
}
