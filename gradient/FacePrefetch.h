#pragma once

#include <algorithm>
#include <cstdlib>

#include "foundation/FaceGroups.h"
#include "gradient/CellSums.h"

/// @file
/// Asking for memory before a walk over faces reads it. There are more arrays than the processor follows by itself.
///
/// What a kernel reads is found out by running it: its face value is evaluated at a face that hands out no numbers
/// and asks for their places instead. All of it is forced inline, since compilers take a function that only
/// prefetches for one without effect and drop its calls.

namespace face_walk {

/// Stands for a number in the evaluation of a face value whose result nobody needs: no arithmetic takes place.
struct NoNumber {
  NoNumber() = default;
  [[gnu::always_inline]] NoNumber(double) {}
};
[[gnu::always_inline]] inline NoNumber operator+(NoNumber, NoNumber) { return {}; }
[[gnu::always_inline]] inline NoNumber operator-(NoNumber, NoNumber) { return {}; }
[[gnu::always_inline]] inline NoNumber operator*(NoNumber, NoNumber) { return {}; }
[[gnu::always_inline]] inline NoNumber operator/(NoNumber, NoNumber) { return {}; }
[[gnu::always_inline]] inline NoNumber Lesser(NoNumber, NoNumber) { return {}; }
[[gnu::always_inline]] inline NoNumber Greater(NoNumber, NoNumber) { return {}; }

/// A face whose evaluation asks for what the kernel reads of the face arrays.
class PrefetchedFace {
 public:
  [[gnu::always_inline]] PrefetchedFace(FaceGroup const& group, int f) : group_(group), f_(f) {}

  [[gnu::always_inline]] NoNumber Weight() const { return Ask(group_.weight); }
  [[gnu::always_inline]] NoNumber CentreX() const { return Ask(group_.xc); }
  [[gnu::always_inline]] NoNumber CentreY() const { return Ask(group_.yc); }
  [[gnu::always_inline]] NoNumber CentreZ() const { return Ask(group_.zc); }
  template <class Field>
  [[gnu::always_inline]] NoNumber InCv(Field const&) const {
    return {};
  }
  template <class Field>
  [[gnu::always_inline]] NoNumber InOther(Field const&) const {
    return {};
  }

 private:
  [[gnu::always_inline]] NoNumber Ask(double const* x) const {
    __builtin_prefetch(x + f_);
    return {};
  }

  FaceGroup const& group_;
  int f_;
};

/// A face whose evaluation asks for what the kernel reads in the cell on the other side.
class PrefetchedOtherCell {
 public:
  [[gnu::always_inline]] explicit PrefetchedOtherCell(int other) : other_(other) {}

  [[gnu::always_inline]] NoNumber Weight() const { return {}; }
  [[gnu::always_inline]] NoNumber CentreX() const { return {}; }
  [[gnu::always_inline]] NoNumber CentreY() const { return {}; }
  [[gnu::always_inline]] NoNumber CentreZ() const { return {}; }
  template <class Field>
  [[gnu::always_inline]] NoNumber InCv(Field const&) const {
    return {};
  }
  template <class Field>
  [[gnu::always_inline]] NoNumber InOther(Field const& q) const {
    __builtin_prefetch(q + other_);
    return {};
  }

 private:
  int other_;
};

/// Asks for the face arrays around the face f.
template <class FaceValue>
[[gnu::always_inline]] inline void PrefetchFaces(FaceGroup const& group, int f, FaceValue const& faceValue) {
  __builtin_prefetch(group.sx + f);
  __builtin_prefetch(group.sy + f);
  __builtin_prefetch(group.sz + f);
  static_cast<void>(faceValue(PrefetchedFace(group, f)));
  __builtin_prefetch(group.cv + f);
  __builtin_prefetch(group.other + f);
  __builtin_prefetch(group.type + f);
}

/// Asks for the cells beyond the faces first..last if these join cells that are far apart, as on a mesh in its
/// generator's own numbering. Cells with neighbouring numbers are in cache anyhow.
template <class FaceValue, class Flux>
[[gnu::always_inline]] inline void PrefetchFarCells(FaceGroup const& group, int first, int last,
                                                    FaceValue const& faceValue, CellSums<Flux> const& sums) {
  constexpr int kFar = 1 << 15;
  constexpr int kSample = 4;
  last = std::min(last, group.count);
  if (last < first + kSample) return;
  for (int f = first; f < first + kSample; ++f)
    if (std::abs(group.other[f] - group.cv[f]) < kFar) return;
  for (int f = first; f <= last; ++f) {
    int const other = group.other[f];
    static_cast<void>(faceValue(PrefetchedOtherCell(other)));
    for (double* array : sums.arrays()) __builtin_prefetch(array + other, 1);
  }
}

}  // namespace face_walk
