// Plain Green-Gauss gradients of three fields at once: a face's cells, weight and area vector are loaded once
// for nine sums.

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGaussKernels.h"

namespace {

using green_gauss::Accumulators;
using green_gauss::BoundarySet;
using green_gauss::FaceSet;
using green_gauss::Two;

/// A value of each of the three fields: two side by side in one register, the third in another.
struct Three {
  Two uv;
  double w;

  static Three At(double* const x[3], int c) { return {Two{x[0][c], x[1][c]}, x[2][c]}; }
  static Three At(double const* const x[3], int c) { return {Two{x[0][c], x[1][c]}, x[2][c]}; }
  void StoreAt(double* const x[3], int c) const { x[0][c] = uv[0], x[1][c] = uv[1], x[2][c] = w; }
  void SubtractAt(double* const x[3], int c) const { x[0][c] -= uv[0], x[1][c] -= uv[1], x[2][c] -= w; }
};

Three operator*(Three const& a, double s) { return {a.uv * Two{s, s}, a.w * s}; }
void operator+=(Three& a, Three const& b) { a.uv += b.uv, a.w += b.w; }
void operator-=(Three& a, Three const& b) { a.uv -= b.uv, a.w -= b.w; }

/// The plain face values of the three fields.
Three FaceValues(double weight, Three const& cv, Three const& other) {
  using namespace green_gauss;
  Two const weights = {weight, weight};
  return {MedianFaceValue(other.uv, LinearFaceValue(weights, cv.uv, other.uv), cv.uv),
          MedianFaceValue(other.w, LinearFaceValue(weight, cv.w, other.w), cv.w)};
}

/// The nine sums by direction: sums along x, y, z of the three fields.
struct Nine {
  double *x[3], *y[3], *z[3];

  /// Of sums that are numbered 3*k + direction for field k.
  template <class Sums>
  static Nine Of(Sums const& g) {
    return {{g[0], g[3], g[6]}, {g[1], g[4], g[7]}, {g[2], g[5], g[8]}};
  }
};

/// Field values and sums of the cell on the CV side, kept at hand while faces of the same cell follow each
/// other; stored before those of another cell are fetched.
class CvCell {
 public:
  [[gnu::always_inline]] CvCell(double const* const phi[3], Nine const& sums, int cell)
      : phi_(phi), sums_(sums) {
    Fetch(cell);
  }
  [[gnu::always_inline]] void MoveTo(int cell) {
    if (cell == cell_) return;
    Store();
    Fetch(cell);
  }
  [[gnu::always_inline]] void Store() const {
    x_.StoreAt(sums_.x, cell_), y_.StoreAt(sums_.y, cell_), z_.StoreAt(sums_.z, cell_);
  }
  [[gnu::always_inline]] Three const& Values() const { return values_; }
  [[gnu::always_inline]] void Add(Three const& fx, Three const& fy, Three const& fz) {
    x_ += fx, y_ += fy, z_ += fz;
  }
  /// On the other side a of a face.
  [[gnu::always_inline]] void Subtract(Three const& fx, Three const& fy, Three const& fz, int a) {
    if (__builtin_expect(a == cell_, 0)) {  // a face of a cell with itself
      x_ -= fx, y_ -= fy, z_ -= fz;
    } else {
      fx.SubtractAt(sums_.x, a), fy.SubtractAt(sums_.y, a), fz.SubtractAt(sums_.z, a);
    }
  }

 private:
  [[gnu::always_inline]] void Fetch(int cell) {
    cell_ = cell;
    values_ = Three::At(phi_, cell);
    x_ = Three::At(sums_.x, cell), y_ = Three::At(sums_.y, cell), z_ = Three::At(sums_.z, cell);
  }

  double const* const* phi_;
  Nine const& sums_;
  int cell_;
  Three values_, x_, y_, z_;
};

[[gnu::noinline]] void AddFaceFluxes3(FaceSet const& faces, int first, int last, double const* const phi[3],
                                      Nine const& g) {
  double const* const fields[3] = {phi[0], phi[1], phi[2]};
  Nine const sums = g;
  CvCell cv(fields, sums, faces.cv[first]);
  for (int f = first; f <= last; ++f) {
    int const a = faces.other[f];
    cv.MoveTo(faces.cv[f]);
    Three const value = FaceValues(faces.weight[f], cv.Values(), Three::At(fields, a));
    Three const fx = value * faces.sx[f], fy = value * faces.sy[f], fz = value * faces.sz[f];
    cv.Add(fx, fy, fz);
    if (faces.type[f] != 1) cv.Subtract(fx, fy, fz, a);
  }
  cv.Store();
}

void AddFaceFluxes3(FaceSet const& faces, double const* const phi[3], Accumulators<9>& sums) {
  using namespace green_gauss;
  for (int first = 1; first <= faces.count; first += kRange) {
    int const last = std::min(first + kRange - 1, faces.count);
    for (int k = 0; k < 3; ++k)
      PrefetchFarCells(faces, first + kRange, PlainScheme{phi[k]}, sums[3 * k], sums[3 * k + 1],
                       sums[3 * k + 2]);
    sums.Reach(faces, first, last);
    AddFaceFluxes3(faces, first, last, phi, Nine::Of(sums));
  }
}

void AddBoundaryFluxes3(BoundarySet const& faces, double const* const phi[3], double* const g[9]) {
  for (int f = 1; f <= faces.count; ++f) {
    int const c = faces.cv[f];
    double const S[3] = {faces.sx[f], faces.sy[f], faces.sz[f]};
    for (int k = 0; k < 3; ++k) {
      double const value = phi[k][faces.ghost[f]];
      for (int d = 0; d < 3; ++d) g[3 * k + d][c] += S[d] * value;
    }
  }
}

void DivideByVolume3(CZYN3DFiniteVolumeMesh const& mesh, double* const g[9]) {
  for (int i = 1; i <= mesh.NInnerCells; ++i) {
    double const r = 1.0 / (mesh.Volume[i] + green_gauss::kTiny);
    for (int j = 0; j < 9; ++j) g[j][i] *= r;
  }
}

}  // namespace

void COperatorGradientImpl::ThreeComponentGreenGauss(double const* const phi[3], double* const g[9]) {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  Accumulators<9> sums({g[0], g[1], g[2], g[3], g[4], g[5], g[6], g[7], g[8]}, mesh.NCell);
  AddFaceFluxes3(green_gauss::InnerFaces(mesh), phi, sums);
  sums.ReachAll();
  AddFaceFluxes3(green_gauss::PartitionFaces(*m_pPartFace), phi, sums);
  for (BoundarySet const& group : green_gauss::BoundaryFaces(mesh)) AddBoundaryFluxes3(group, phi, g);
  DivideByVolume3(mesh, g);
  ExchangeNine(g);
}
