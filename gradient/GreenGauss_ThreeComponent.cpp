// Plain Green-Gauss gradients of three fields at once: a face's cells, weight and area vector are loaded once
// for nine sums.

#include "gradient/COperatorGradientImpl.h"
#include "gradient/GreenGaussKernels.h"

namespace {

using green_gauss::Accumulators;
using green_gauss::BoundarySet;
using green_gauss::FaceSet;

// Adds the fluxes of the faces first..last of one field to its three sums, all cells cleared.
void AddFaceFluxesOfField(FaceSet const& faces, int first, int last, double const* phi, double* gx,
                          double* gy, double* gz) {
  green_gauss::PlainScheme const scheme{phi};
  int f = first;
  while (f <= last) {
    int const b = faces.cv[f];
    double const phiB = phi[b];
    double sumX = gx[b], sumY = gy[b], sumZ = gz[b];
    do {
      int const a = faces.other[f];
      double const value = scheme.FaceValue(faces, f, phi[a], phiB);
      double const fluxX = value * faces.sx[f], fluxY = value * faces.sy[f], fluxZ = value * faces.sz[f];
      sumX += fluxX, sumY += fluxY, sumZ += fluxZ;
      if (faces.type[f] != 1) gx[a] -= fluxX, gy[a] -= fluxY, gz[a] -= fluxZ;
      ++f;
    } while (f <= last && faces.cv[f] == b);
    gx[b] = sumX, gy[b] = sumY, gz[b] = sumZ;
  }
}

// Sums are numbered 3*k + direction for field k.
void AddFaceFluxes3(FaceSet const& faces, double const* const phi[3], Accumulators<9>& sums) {
  constexpr int kBlock = 256;
  for (int first = 1; first <= faces.count; first += kBlock) {
    int const last = std::min(first + kBlock - 1, faces.count);
    int highest = 0;
    for (int f = first; f <= last; ++f) {
      if (f % 8 == 0) green_gauss::PrefetchFaces(faces, f + kBlock);
      highest = std::max(highest, std::max(faces.cv[f], faces.other[f]));
    }
    sums.Reach(highest);
    for (int k = 0; k < 3; ++k)
      AddFaceFluxesOfField(faces, first, last, phi[k], sums[3 * k], sums[3 * k + 1], sums[3 * k + 2]);
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
