// Plain Green-Gauss gradients of three fields at once: a face's cells, weight and area vector are loaded once
// for nine sums.

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGaussKernels.h"

namespace {

using green_gauss::Accumulators;
using green_gauss::BoundarySet;
using green_gauss::FaceSet;

// A further field of faces that have been asked for already.
struct NextFieldScheme : green_gauss::PlainScheme {
  void PrefetchFaces(FaceSet const& /*faces*/, int /*f*/) const {}
};

// Field after field in ranges of faces: the face arrays come from memory once, and a loop over the faces of
// one field has registers for its three sums. Sums are numbered 3*k + direction for field k.
void AddFaceFluxes3(FaceSet const& faces, double const* const phi[3], Accumulators<9>& sums) {
  using namespace green_gauss;
  for (int first = 1; first <= faces.count; first += kRange) {
    int const last = std::min(first + kRange - 1, faces.count);
    for (int k = 0; k < 3; ++k)
      PrefetchFarCells(faces, first + kRange, PlainScheme{phi[k]}, sums[3 * k], sums[3 * k + 1],
                       sums[3 * k + 2]);
    sums.Reach(faces, first, last);
    AddFaceFluxes(faces, first, last, PlainScheme{phi[0]}, sums[0], sums[1], sums[2]);
    AddFaceFluxes(faces, first, last, NextFieldScheme{{phi[1]}}, sums[3], sums[4], sums[5]);
    AddFaceFluxes(faces, first, last, NextFieldScheme{{phi[2]}}, sums[6], sums[7], sums[8]);
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
