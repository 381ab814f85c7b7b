#pragma once

#include <array>
#include <cstddef>

#include "foundation/FaceGroups.h"
#include "gradient/FaceWalk.h"
#include "gradient/TwoFaces.h"

/// @file
/// Walks over faces for three fields at once: a face's cells, weight and area vector are loaded once for nine sums.

namespace face_walk {

/// A number of each of the three fields: two side by side in one register, the third in another.
struct Three {
  two_faces::Two uv;
  double w;
};
[[gnu::always_inline]] inline Three operator+(Three const& a, Three const& b) {
  return {a.uv + b.uv, a.w + b.w};
}
[[gnu::always_inline]] inline Three operator*(double s, Three const& a) {
  return {two_faces::Two{s, s} * a.uv, s * a.w};
}
[[gnu::always_inline]] inline Three operator*(Three const& a, double s) {
  return {a.uv * two_faces::Two{s, s}, a.w * s};
}
[[gnu::always_inline]] inline void operator+=(Three& a, Three const& b) { a.uv += b.uv, a.w += b.w; }
[[gnu::always_inline]] inline void operator-=(Three& a, Three const& b) { a.uv -= b.uv, a.w -= b.w; }
[[gnu::always_inline]] inline Three Lesser(Three const& a, Three const& b) {
  return {two_faces::Lesser(a.uv, b.uv), two_faces::Lesser(a.w, b.w)};
}
[[gnu::always_inline]] inline Three Greater(Three const& a, Three const& b) {
  return {two_faces::Greater(a.uv, b.uv), two_faces::Greater(a.w, b.w)};
}

/// Three cell arrays, [1..NCell] each.
struct ThreeFields {
  double const *u, *v, *w;
};
[[gnu::always_inline]] inline Three InCells(ThreeFields const& phi, int c) {
  return {two_faces::Two{phi.u[c], phi.v[c]}, phi.w[c]};
}

/// The Flux of each of the three fields, by direction.
struct ThreeFluxes {
  static constexpr std::size_t kArrays = 9;  ///< x, y, z of the first field, then of the second and the third
  static constexpr bool kPrefetchesFarCells = false;  ///< twelve arrays a face: measured, it gains nothing
  using Arrays = std::array<double*, kArrays>;

  Three x, y, z;

  [[gnu::always_inline]] static ThreeFluxes Of(Three const& value, FaceGroup const& group, int f) {
    return {value * group.sx[f], value * group.sy[f], value * group.sz[f]};
  }
  [[gnu::always_inline]] static ThreeFluxes At(Arrays const& a, int c) {
    return {{two_faces::Two{a[0][c], a[3][c]}, a[6][c]},
            {two_faces::Two{a[1][c], a[4][c]}, a[7][c]},
            {two_faces::Two{a[2][c], a[5][c]}, a[8][c]}};
  }
  [[gnu::always_inline]] void StoreAt(Arrays const& a, int c) const {
    a[0][c] = x.uv[0], a[3][c] = x.uv[1], a[6][c] = x.w;
    a[1][c] = y.uv[0], a[4][c] = y.uv[1], a[7][c] = y.w;
    a[2][c] = z.uv[0], a[5][c] = z.uv[1], a[8][c] = z.w;
  }
  [[gnu::always_inline]] void SubtractAt(Arrays const& a, int c) const {
    a[0][c] -= x.uv[0], a[3][c] -= x.uv[1], a[6][c] -= x.w;
    a[1][c] -= y.uv[0], a[4][c] -= y.uv[1], a[7][c] -= y.w;
    a[2][c] -= z.uv[0], a[5][c] -= z.uv[1], a[8][c] -= z.w;
  }
  [[gnu::always_inline]] void operator+=(ThreeFluxes const& o) { x += o.x, y += o.y, z += o.z; }
  [[gnu::always_inline]] void operator-=(ThreeFluxes const& o) { x -= o.x, y -= o.y, z -= o.z; }
};

/// A face of which the values on the CV side are in registers.
struct FaceOfKeptCell : OneFace {
  Three phiCv;

  Three InCv(ThreeFields const&) const { return phiCv; }
};

/// The faces first..last of a group. The values on the CV side are kept like the sums.
/// @param faceValue  reads no other cell arrays than the three fields, its member `phi`
template <class FaceValue>
[[gnu::noinline]] void AddRange(FaceGroup const& group, int first, int last, FaceValue const& faceValue,
                                ThreeFluxes::Arrays const& arrays) {
  FaceValue const valueAt = faceValue;
  Three phiCv = InCells(valueAt.phi, group.cv[first]);
  CvSum<ThreeFluxes> sum(arrays, group.cv[first]);
  for (int f = first; f <= last; ++f) {
    int const cv = group.cv[f], other = group.other[f];
    if (sum.MoveTo(cv)) phiCv = InCells(valueAt.phi, cv);
    ThreeFluxes const flux = ThreeFluxes::Of(valueAt(FaceOfKeptCell{{group, f, cv, other}, phiCv}), group, f);
    sum.Add(flux);
    if (group.type[f] != 1) sum.Subtract(flux, other);
  }
  sum.Store();
}

}  // namespace face_walk
