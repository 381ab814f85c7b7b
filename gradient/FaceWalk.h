#pragma once

#include <algorithm>

#include "foundation/FaceGroups.h"
#include "gradient/CellSums.h"
#include "gradient/FacePrefetch.h"
#include "gradient/TwoFaces.h"

/// @file
/// Walks over the faces of a group that add a face value times the area vector to the sums of cells. A kernel says what
/// the value is; how the faces are taken, in pairs, with memory asked for ahead, is decided here.
///
/// The order of every addition into a cell is part of the result: faces by ascending number, and of each face first
/// its CV side, then its other side.

namespace face_walk {

/// What a kernel may read at a face between two cells, or at two faces side by side.
template <class Value, class Cells>
struct FaceAt {
  FaceGroup const& group;
  int f;  ///< the face, or the first of two
  Cells cv, other;

  Value Weight() const {
    return two_faces::At<Value>(group.weight, f);
  }  ///< w of `other`, that of `cv` is 1 - w
  Value CentreX() const { return two_faces::At<Value>(group.xc, f); }
  Value CentreY() const { return two_faces::At<Value>(group.yc, f); }
  Value CentreZ() const { return two_faces::At<Value>(group.zc, f); }
  template <class Field>
  auto InCv(Field const& q) const {
    using two_faces::InCells;
    return InCells(q, cv);
  }
  template <class Field>
  auto InOther(Field const& q) const {
    using two_faces::InCells;
    return InCells(q, other);
  }
};

using OneFace = FaceAt<double, int>;
using TwoFaces = FaceAt<two_faces::Two, two_faces::TwoCells>;

/// Whether all of the faces first..last join two cells that both take the flux, as nearly all faces do.
inline bool AllTwoSided(FaceGroup const& group, int first, int last) {
  int exceptions = 0;
  for (int f = first; f <= last; ++f)
    exceptions |= static_cast<int>(group.type[f] == 1) | static_cast<int>(group.cv[f] == group.other[f]);
  return exceptions == 0;
}

template <class FaceValue, class Flux>
[[gnu::always_inline]] inline void AddOneFace(FaceGroup const& group, int f, FaceValue const& faceValue,
                                              CvSum<Flux>& sum) {
  int const cv = group.cv[f], other = group.other[f];
  Flux const flux = Flux::Of(faceValue(OneFace{group, f, cv, other}), group, f);
  sum.MoveTo(cv);
  sum.Add(flux);
  if (group.type[f] != 1) sum.Subtract(flux, other);
}

/// The two-sided faces f and f+1: their values side by side, then the fluxes one after the other.
template <class FaceValue>
[[gnu::always_inline]] inline void AddTwoFaces(FaceGroup const& group, int f, FaceValue const& faceValue,
                                               CvSum<Flux>& sum) {
  two_faces::TwoCells const cv{group.cv[f], group.cv[f + 1]}, other{group.other[f], group.other[f + 1]};
  two_faces::Two const value = faceValue(TwoFaces{group, f, cv, other});
  Flux const first = Flux::Of(value[0], group, f);
  sum.MoveTo(cv.first);
  sum.Add(first);
  sum.SubtractBeyond(first, other.first);
  Flux const second = Flux::Of(value[1], group, f + 1);
  sum.MoveTo(cv.second);
  sum.Add(second);
  sum.SubtractBeyond(second, other.second);
}

/// Faces are taken in ranges; what is decided once for several faces is decided for a range.
constexpr int kRange = 256;
/// How many faces ahead their arrays are asked for.
constexpr int kAhead = 128;

/// The faces first..last of a group. (Not inlined, so that the loop has the registers to itself.)
template <class FaceValue>
[[gnu::noinline]] void AddRange(FaceGroup const& group, int first, int last, FaceValue const& faceValue,
                                Flux::Arrays const& arrays) {
  constexpr int kLine = 8;  // doubles in a cache line
  CvSum<Flux> sum(arrays, group.cv[first]);
  int f = first;
  if (AllTwoSided(group, first, last)) {
    for (; f + kLine - 1 <= last; f += kLine) {
      PrefetchFaces(group, f + kAhead, faceValue);
      for (int k = 0; k < kLine; k += 2) AddTwoFaces(group, f + k, faceValue, sum);
    }
  }
  for (; f <= last; ++f) AddOneFace(group, f, faceValue, sum);
  sum.Store();
}

/// Adds value * S to the sum of `cv` and subtracts it from that of `other`, unless the face's type is 1.
/// @param faceValue  gives the value at a face: `faceValue(face)` reads the face like FaceAt and calculates with what it
///                   finds there, be it one number, two side by side or none
template <class FaceValue, class Flux>
void AddFluxes(FaceGroup const& group, FaceValue const& faceValue, CellSums<Flux>& sums) {
  for (int first = 1; first <= group.count; first += kRange) {
    int const last = std::min(first + kRange - 1, group.count);
    if constexpr (Flux::kPrefetchesFarCells)
      PrefetchFarCells(group, first + kRange, last + kRange, faceValue, sums);
    sums.Reach(group, first, last);
    AddRange(group, first, last, faceValue, sums.arrays());
  }
}

/// Adds value * S to the sum of `cv`, with the value of `phi` in the ghost cell; the ghost cell's sum stays 0.0.
template <class Field, class Flux>
void AddBoundaryFluxes(FaceGroup const& group, Field const& phi, CellSums<Flux>& sums) {
  using two_faces::InCells;
  sums.ReachAll();
  for (int f = 1; f <= group.count; ++f) {
    Flux sum = Flux::At(sums.arrays(), group.cv[f]);
    sum += Flux::Of(InCells(phi, group.other[f]), group, f);
    sum.StoreAt(sums.arrays(), group.cv[f]);
  }
}

}  // namespace face_walk
