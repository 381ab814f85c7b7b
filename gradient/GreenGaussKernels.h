#pragma once

// What the Green-Gauss gradients share: (1/V) * sum over faces of phi_face * S, in loops over faces and
// cells. The order of every addition into a cell is part of the result: inner faces, then partition faces,
// then the boundary groups, each by ascending number.

#include <algorithm>
#include <array>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

/// x < y ? x : y, and x > y ? x : y. SSE2 has just these, ties and NaNs included (the second operand then),
/// while compilers at times make a branch of the two together, which field values mispredict.
#if defined(__SSE2__)
inline double Lesser(double x, double y) { return _mm_cvtsd_f64(_mm_min_sd(_mm_set_sd(x), _mm_set_sd(y))); }
inline double Greater(double x, double y) { return _mm_cvtsd_f64(_mm_max_sd(_mm_set_sd(x), _mm_set_sd(y))); }
#else
inline double Lesser(double x, double y) { return x < y ? x : y; }
inline double Greater(double x, double y) { return x > y ? x : y; }
#endif

/// Median of the two cell values and the face value v, which keeps the face value between the cells. The
/// strict comparisons in this form decide ties and values that do not compare. @cite suresh1997
inline double MedianFaceValue(double phiOther, double v, double phiCv) {
  double const lo = Lesser(v, phiOther);   // phiOther > v ? v : phiOther
  double const hi = Greater(phiOther, v);  // phiOther > v ? phiOther : v
  double const hi2 = Lesser(phiCv, hi);    // hi > phiCv ? phiCv : hi
  return Greater(lo, hi2);                 // lo > hi2 ? lo : hi2
}

/// Linear face value (1-w)*phi[b] + w*phi[a], not limited.
inline double LinearFaceValue(double w, double phiCv, double phiOther) {
  return (1 - w) * phiCv + w * phiOther;
}

/// The plain forms: the limited linear value.
struct PlainScheme {
  double const* phi;

  double At(int cell) const { return phi[cell]; }
  double FaceValue(FaceSet const& faces, int f, double phiOther, double phiCv) const {
    return MedianFaceValue(phiOther, LinearFaceValue(faces.weight[f], phiCv, phiOther), phiCv);
  }
};

/// N cell arrays that a sweep accumulates into. They are set to zero in blocks just ahead of the first cell
/// that a face touches, so that on a mesh with neighbouring numbers a block is still in cache when its sums
/// begin; the stored numbers are those of clearing everything first.
template <int N>
class Accumulators {
 public:
  Accumulators(std::array<double*, N> const& arrays, int nCell) : arrays_(arrays), nCell_(nCell) {}

  /// Makes all cells up to `cell` ready to be added to.
  void Reach(int cell) {
    if (cell > cleared_) ClearTo(std::min(std::max(cell, cleared_) + kBlock, nCell_));
  }
  /// Makes all cells ready to be added to.
  void ReachAll() { ClearTo(nCell_); }

  double* operator[](int i) const { return arrays_[static_cast<std::size_t>(i)]; }

 private:
  static constexpr int kBlock = 512;

  void ClearTo(int last) {
    if (last <= cleared_) return;
    for (double* array : arrays_) std::fill(array + cleared_ + 1, array + last + 1, 0.0);
    cleared_ = last;
  }

  std::array<double*, N> arrays_;
  int nCell_;
  int cleared_ = 0;
};

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

/// How many faces ahead their arrays are asked for.
constexpr int kAhead = 96;

/// Adds flux = value * S to the CV side of every face and subtracts it on the other side, face by face.
/// @tparam Scheme  how a face value is found: `At(cell)` gives what it needs of a cell,
///                 `FaceValue(faces, f, other, cv)` the value from that of both cells
template <class Scheme>
void AddFaceFluxes(FaceSet const& faces, Accumulators<3>& sums, Scheme const& scheme) {
  double *const gx = sums[0], *const gy = sums[1], *const gz = sums[2];
  auto const addFace = [&](int f) __attribute__((always_inline)) {
    int const a = faces.other[f], b = faces.cv[f];
    double const value = scheme.FaceValue(faces, f, scheme.At(a), scheme.At(b));
    double const fluxX = value * faces.sx[f], fluxY = value * faces.sy[f], fluxZ = value * faces.sz[f];
    gx[b] += fluxX, gy[b] += fluxY, gz[b] += fluxZ;
    if (faces.type[f] != 1) gx[a] -= fluxX, gy[a] -= fluxY, gz[a] -= fluxZ;
  };
  constexpr int kLine = 8;
  int f = 1;
  for (; f + kLine - 1 <= faces.count; f += kLine) {
    PrefetchFaces(faces, f + kAhead);
    int highest = 0;
    for (int k = 0; k < kLine; ++k)
      highest = std::max(highest, std::max(faces.other[f + k], faces.cv[f + k]));
    sums.Reach(highest);
    for (int k = 0; k < kLine; ++k) addFace(f + k);
  }
  for (; f <= faces.count; ++f) {
    sums.Reach(std::max(faces.other[f], faces.cv[f]));
    addFace(f);
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
