#pragma once

// What the Green-Gauss gradients share: (1/V) * sum over faces of phi_face * S, in loops over faces and
// cells. The order of every addition into a cell is part of the result: inner faces, then partition faces,
// then the boundary groups, each by ascending number.

#include <algorithm>
#include <array>
#include <cstdlib>

#include "gradient/TwoFaces.h"
#include "host/Zyn3dGV.h"

namespace green_gauss {

/// Keeps 1/V finite for an empty cell.
constexpr double kTiny = 1e-30;

/// Faces between two cells, inner or partition faces alike. All arrays [1..count].
struct FaceSet {
  int count;
  int const* cv;     ///< side that receives +flux
  int const* other;  ///< side that receives -flux, unless the type is 1
  double const *sx, *sy, *sz;
  double const *xc, *yc, *zc;
  double const* weight;  ///< of the other side
  int const* type;
};

/// Boundary faces of one group. All arrays [1..count].
struct BoundarySet {
  int count;
  int const* cv;
  int const* ghost;
  double const *sx, *sy, *sz;
};

inline FaceSet InnerFaces(CZYN3DFiniteVolumeMesh const& m) {
  return {m.NInnerFaces, m.ijCV, m.ij, m.ijSx, m.ijSy, m.ijSz, m.ijxc, m.ijyc, m.ijzc, m.Lamda, m.FaceType};
}

inline FaceSet PartitionFaces(CPartitionFace_DLL& p) {
  return {p.NParInterFace(),     p.ijParCV(), p.ijPar(),   p.ijParSx(), p.ijParSy(),
          p.ijParSz(),           p.ijParxc(), p.ijParyc(), p.ijParzc(), p.ParInterFace_Lamda(),
          p.FaceType_Partition()};
}

/// Boundary groups in the order of the Green-Gauss sums: inlet, outlet, symmetry, wall (least squares has
/// another).
inline std::array<BoundarySet, 4> BoundaryFaces(CZYN3DFiniteVolumeMesh const& m) {
  return {{{m.NInlet, m.ijInletCV, m.ijInlet, m.ijInletSx, m.ijInletSy, m.ijInletSz},
           {m.NOutlet, m.ijOutletCV, m.ijOutlet, m.ijOutletSx, m.ijOutletSy, m.ijOutletSz},
           {m.NSymmetry, m.ijSymmetryCV, m.ijSymmetry, m.ijSymmetrySx, m.ijSymmetrySy, m.ijSymmetrySz},
           {m.NWall, m.ijWallCV, m.ijWall, m.ijWallSx, m.ijWallSy, m.ijWallSz}}};
}

using two_faces::At;
using two_faces::InCells;
using two_faces::Two;
using two_faces::TwoCells;

/// Median of the two cell values and the face value v, which keeps the face value between the cells. The
/// strict comparisons in this form decide ties and values that do not compare. @cite suresh1997
template <class Value>
Value MedianFaceValue(Value phiOther, Value v, Value phiCv) {
  Value const lo = two_faces::Lesser(v, phiOther);   // phiOther > v ? v : phiOther
  Value const hi = two_faces::Greater(phiOther, v);  // phiOther > v ? phiOther : v
  Value const hi2 = two_faces::Lesser(phiCv, hi);    // hi > phiCv ? phiCv : hi
  return two_faces::Greater(lo, hi2);                // lo > hi2 ? lo : hi2
}

/// Linear value (1-w)*cv + w*other, not limited.
template <class Value>
Value LinearFaceValue(Value w, Value phiCv, Value phiOther) {
  return (1.0 - w) * phiCv + w * phiOther;
}

/// Asks for the arrays of the faces some lines ahead: there are more of them than the processor follows by
/// itself. (Forced inline: a function that does nothing but prefetch is taken for one without effect and
/// dropped.)
[[gnu::always_inline]] inline void PrefetchFaces(FaceSet const& faces, int f) {
  __builtin_prefetch(faces.sx + f);
  __builtin_prefetch(faces.sy + f);
  __builtin_prefetch(faces.sz + f);
  __builtin_prefetch(faces.weight + f);
  __builtin_prefetch(faces.cv + f);
  __builtin_prefetch(faces.other + f);
  __builtin_prefetch(faces.type + f);
}

/// The plain forms: the limited linear value.
struct PlainScheme {
  double const* phi;

  template <class Value, class Cells>
  Value FaceValue(FaceSet const& faces, int f, Cells a, Cells b) const {
    Value const w = At<Value>(faces.weight, f);
    Value const phiOther = InCells(phi, a), phiCv = InCells(phi, b);
    return MedianFaceValue(phiOther, LinearFaceValue(w, phiCv, phiOther), phiCv);
  }
  [[gnu::always_inline]] void PrefetchFaces(FaceSet const& faces, int f) const {
    green_gauss::PrefetchFaces(faces, f);
  }
  [[gnu::always_inline]] void PrefetchCell(int c) const { __builtin_prefetch(phi + c); }
};

/// N cell arrays that a sweep accumulates into. They are set to zero in blocks just ahead of the first cell
/// that a face touches, so that on a mesh with neighbouring numbers a block is still in cache when its sums
/// begin; the stored numbers are those of clearing everything first.
template <int N>
class Accumulators {
 public:
  Accumulators(std::array<double*, N> const& arrays, int nCell) : arrays_(arrays), nCell_(nCell) {}

  /// Makes the cells of the faces first..last ready to be added to.
  void Reach(FaceSet const& faces, int first, int last) {
    int f = first;
    for (; f + 7 <= last; f += 8)
      if (two_faces::AnyOfEightAbove(cleared_, faces.cv + f, faces.other + f)) break;
    for (; f <= last; ++f) ClearAhead(std::max(faces.cv[f], faces.other[f]));
  }
  /// Makes all cells ready to be added to.
  void ReachAll() { ClearTo(nCell_); }

  double* operator[](int i) const { return arrays_[static_cast<std::size_t>(i)]; }

 private:
  static constexpr int kBlock = 512;

  void ClearAhead(int cell) {
    if (cell > cleared_) ClearTo(std::min(cell + kBlock, nCell_));
  }
  void ClearTo(int last) {
    if (last <= cleared_) return;
    for (double* array : arrays_) std::fill(array + cleared_ + 1, array + last + 1, 0.0);
    cleared_ = last;
  }

  std::array<double*, N> arrays_;
  int nCell_;
  int cleared_ = 0;
};

/// A flux, or a sum of fluxes: two directions side by side in one register, the third in another.
struct Flux {
  Two xy;
  double z;

  static Flux Of(double value, FaceSet const& faces, int f) {
    return {Two{value, value} * Two{faces.sx[f], faces.sy[f]}, value * faces.sz[f]};
  }
};

/// Sums of the cell on the CV side, kept at hand while faces of the same cell follow each other. They are
/// stored before those of another cell are fetched, so no addition changes its place.
class CvSums {
 public:
  [[gnu::always_inline]] CvSums(double* gx, double* gy, double* gz, int cell) : gx_(gx), gy_(gy), gz_(gz) {
    Fetch(cell);
  }

  /// Adds the flux of a face to its CV side b.
  [[gnu::always_inline]] void Add(Flux const& flux, int b) {
    if (b != cell_) {
      Store();
      Fetch(b);
    }
    sum_.xy += flux.xy;
    sum_.z += flux.z;
  }
  /// Subtracts it on the other side a.
  [[gnu::always_inline]] void Subtract(Flux const& flux, int a) {
    if (__builtin_expect(a == cell_, 0)) {  // a face of a cell with itself
      sum_.xy -= flux.xy;
      sum_.z -= flux.z;
    } else {
      SubtractBeyond(flux, a);
    }
  }
  /// The same for a cell a that is not the CV side.
  [[gnu::always_inline]] void SubtractBeyond(Flux const& flux, int a) {
    gx_[a] -= flux.xy[0];
    gy_[a] -= flux.xy[1];
    gz_[a] -= flux.z;
  }
  [[gnu::always_inline]] void Store() const {
    gx_[cell_] = sum_.xy[0];
    gy_[cell_] = sum_.xy[1];
    gz_[cell_] = sum_.z;
  }

 private:
  [[gnu::always_inline]] void Fetch(int cell) {
    cell_ = cell;
    sum_ = {Two{gx_[cell], gy_[cell]}, gz_[cell]};
  }

  double *gx_, *gy_, *gz_;
  int cell_;
  Flux sum_;
};

/// Whether all of the faces first..last join two cells that both take the flux, as nearly all faces do.
inline bool AllTwoSided(FaceSet const& faces, int first, int last) {
  int exceptions = 0;
  for (int f = first; f <= last; ++f)
    exceptions |= static_cast<int>(faces.type[f] == 1) | static_cast<int>(faces.cv[f] == faces.other[f]);
  return exceptions == 0;
}

/// One face: flux = value * S.
template <class Scheme>
[[gnu::always_inline]] inline void AddOneFace(FaceSet const& faces, int f, Scheme const& scheme,
                                              CvSums& sums) {
  int const a = faces.other[f], b = faces.cv[f];
  Flux const flux = Flux::Of(scheme.template FaceValue<double>(faces, f, a, b), faces, f);
  sums.Add(flux, b);
  if (faces.type[f] != 1) sums.Subtract(flux, a);
}

/// The two-sided faces f and f+1: their values side by side, then the fluxes one after the other.
template <class Scheme>
[[gnu::always_inline]] inline void AddTwoFaces(FaceSet const& faces, int f, Scheme const& scheme,
                                               CvSums& sums) {
  TwoCells const a{faces.other[f], faces.other[f + 1]}, b{faces.cv[f], faces.cv[f + 1]};
  Two const value = scheme.template FaceValue<Two>(faces, f, a, b);
  Flux const first = Flux::Of(value[0], faces, f);
  sums.Add(first, b.first);
  sums.SubtractBeyond(first, a.first);
  Flux const second = Flux::Of(value[1], faces, f + 1);
  sums.Add(second, b.second);
  sums.SubtractBeyond(second, a.second);
}

/// Faces are taken in ranges; what is decided once for several faces is decided for a range.
constexpr int kRange = 256;
/// How many faces ahead their arrays are asked for.
constexpr int kAhead = 128;

/// Asks for the cells of the range that begins at `first` if its faces join cells that are far apart, as on a
/// mesh in its generator's own numbering. Neighbouring numbers are in cache anyhow.
template <class Scheme>
void PrefetchFarCells(FaceSet const& faces, int first, Scheme const& scheme, double* gx, double* gy,
                      double* gz) {
  constexpr int kFar = 1 << 15;
  int const last = std::min(first + kRange - 1, faces.count);
  if (last <= first + 3) return;
  for (int f = first; f < first + 4; ++f)
    if (std::abs(faces.other[f] - faces.cv[f]) < kFar) return;
  for (int f = first; f <= last; ++f) {
    int const a = faces.other[f];
    scheme.PrefetchCell(a);
    __builtin_prefetch(gx + a, 1);
    __builtin_prefetch(gy + a, 1);
    __builtin_prefetch(gz + a, 1);
  }
}

/// Adds flux = value * S to the CV side of the faces first..last and subtracts it on the other side, face by
/// face. (Not inlined, so that the loop has the registers to itself.)
/// @tparam Scheme  how a face value is found: `FaceValue<Value>(faces, f, a, b)` for the face f between the
///                 cells a and b, or for the faces f and f+1 side by side; `PrefetchFaces(faces, f)` and
///                 `PrefetchCell(c)` ask for what it reads there
template <class Scheme>
[[gnu::noinline]] void AddFaceFluxes(FaceSet const& faces, int first, int last, Scheme const& scheme,
                                     double* gx, double* gy, double* gz) {
  constexpr int kLine = 8;  // doubles in a cache line
  CvSums sums(gx, gy, gz, faces.cv[first]);
  int f = first;
  if (AllTwoSided(faces, first, last)) {
    for (; f + kLine - 1 <= last; f += kLine) {
      scheme.PrefetchFaces(faces, f + kAhead);
      for (int k = 0; k < kLine; k += 2) AddTwoFaces(faces, f + k, scheme, sums);
    }
  }
  for (; f <= last; ++f) AddOneFace(faces, f, scheme, sums);
  sums.Store();
}

/// The same for all faces.
template <class Scheme>
void AddFaceFluxes(FaceSet const& faces, Accumulators<3>& sums, Scheme const& scheme) {
  for (int first = 1; first <= faces.count; first += kRange) {
    int const last = std::min(first + kRange - 1, faces.count);
    PrefetchFarCells(faces, first + kRange, scheme, sums[0], sums[1], sums[2]);
    sums.Reach(faces, first, last);
    AddFaceFluxes(faces, first, last, scheme, sums[0], sums[1], sums[2]);
  }
}

/// Boundary faces: the face value is the ghost cell's value itself; the ghost cell's sum receives nothing.
inline void AddBoundaryFluxes(BoundarySet const& faces, double const* phi, double* gx, double* gy,
                              double* gz) {
  for (int f = 1; f <= faces.count; ++f) {
    int const c = faces.cv[f];
    double const value = phi[faces.ghost[f]];
    gx[c] += faces.sx[f] * value;
    gy[c] += faces.sy[f] * value;
    gz[c] += faces.sz[f] * value;
  }
}

/// The sums of all faces: inner faces, partition faces, boundary groups.
template <class Scheme>
void SumFaceFluxes(CZYN3DFiniteVolumeMesh const& mesh, CPartitionFace_DLL& partition, double const* phi,
                   double* gx, double* gy, double* gz, Scheme const& scheme) {
  Accumulators<3> sums({gx, gy, gz}, mesh.NCell);
  AddFaceFluxes(InnerFaces(mesh), sums, scheme);
  sums.ReachAll();
  AddFaceFluxes(PartitionFaces(partition), sums, scheme);
  for (BoundarySet const& group : BoundaryFaces(mesh)) AddBoundaryFluxes(group, phi, gx, gy, gz);
}

/// g *= 1/(V + 1e-30) in the interior cells. Sums of ghost and halo cells are left as they are.
inline void DivideByVolume(CZYN3DFiniteVolumeMesh const& mesh, double* gx, double* gy, double* gz) {
  double const* const volume = mesh.Volume;
  for (int i = 1; i <= mesh.NInnerCells; ++i) {
    double const r = 1.0 / (volume[i] + kTiny);
    gx[i] *= r;
    gy[i] *= r;
    gz[i] *= r;
  }
}

}  // namespace green_gauss
