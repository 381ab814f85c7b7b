// Plain Green-Gauss gradients of three fields at once: a face's cells, weight and area vector are loaded once
// for nine sums.

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGaussKernels.h"

namespace {

using green_gauss::Accumulators;
using green_gauss::BoundarySet;
using green_gauss::FaceSet;

// Sums are numbered 3*k + direction for field k.
void AddFaceFluxes3(FaceSet const& faces, double const* const phi[3], Accumulators<9>& sums) {
  for (int f = 1; f <= faces.count; ++f) {
    int const a = faces.other[f];
    int const b = faces.cv[f];
    sums.Reach(std::max(a, b));
    double const w = faces.weight[f];
    double const S[3] = {faces.sx[f], faces.sy[f], faces.sz[f]};
    bool const bothSides = faces.type[f] != 1;
    for (int k = 0; k < 3; ++k) {
      double const value = green_gauss::PlainFaceValue(w, phi[k][b], phi[k][a]);
      for (int d = 0; d < 3; ++d) {
        double const flux = value * S[d];
        sums[3 * k + d][b] += flux;
        if (bothSides) sums[3 * k + d][a] -= flux;
      }
    }
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
