#pragma once

#include "gradient/FaceWalk.h"
#include "gradient/TwoFaces.h"

/// @file
/// What the Green-Gauss gradients share beside their sums: the limiter and the linear face value.

namespace ring_walk {
// How the walk with a ring keeps cells and adds faces with these values: RingRecords.h.
template <class Field>
class LinearRecords;
template <class FaceValue>
class CorrectedRecords;
}  // namespace ring_walk

namespace green_gauss {

/// Keeps quotients finite: 1/V of an empty cell, and the inverse of a coefficient that is zero.
constexpr double kTiny = 1e-30;

/// Median of the values in the two cells and at the face, which keeps the face value v between the cells.
///
///   lo  = min(v, phiOther)      hi = max(phiOther, v)
///   hi2 = min(phiCv, hi)        median = max(lo, hi2)
///
/// Written in strict comparisons, of which ties and NaNs give the second operand: that decides their results.
/// @cite suresh1997
template <class Value>
[[gnu::always_inline]] inline Value Median(Value phiOther, Value v, Value phiCv) {
  using two_faces::Greater;
  using two_faces::Lesser;
  Value const lo = Lesser(v, phiOther);   // phiOther > v ? v : phiOther
  Value const hi = Greater(phiOther, v);  // phiOther > v ? phiOther : v
  Value const hi2 = Lesser(phiCv, hi);    // hi > phiCv ? phiCv : hi
  return Greater(lo, hi2);                // lo > hi2 ? lo : hi2
}

/// (1 - w) phi_cv + w phi_other.
template <class Weight, class Value>
[[gnu::always_inline]] inline Value Linear(Weight w, Value phiCv, Value phiOther) {
  return (1.0 - w) * phiCv + w * phiOther;
}

/// phi_f = median(phi_other, (1 - w) phi_cv + w phi_other, phi_cv). With a weight between 0 and 1 the median changes
/// no more than a rounding error.
template <class Field>
struct LimitedLinear {
  using Records = ring_walk::LinearRecords<Field>;

  Field phi;

  template <class Face>
  [[gnu::always_inline]] auto operator()(Face const& face) const {
    auto const w = face.Weight();
    auto const phiOther = face.InOther(phi), phiCv = face.InCv(phi);
    return Median(phiOther, Linear(w, phiCv, phiOther), phiCv);
  }
};
template <class Field>
LimitedLinear(Field) -> LimitedLinear<Field>;

}  // namespace green_gauss
