// The weights applied to fields: nothing but loads, multiplies and adds.

#include <algorithm>

#include "host/Zyn3dGV.h"
#include "rbf_cell/CZynRBFInternalObject.h"

namespace {

constexpr int kSuccess = 1;

// Elements first..last.
void Clear(double* array, int first, int last) {
  if (first <= last) std::fill(array + first, array + last + 1, 0.0);
}

}  // namespace

int CZynRBFInternalObject::MultiplyRBFCoefficent(double* phi, double* gx, double* gy, double* gz) {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;

  // grad phi at i = sum over the stencil of i, in its order, of phi times the weights.
  int const nInnerCells = mesh.NInnerCells;
  for (int i = 1; i <= nInnerCells; ++i) {
    int const* const stencil = m_ppRBFCellConn[i];
    RBFnode const* const weights = m_ppRBFCellCoef[i];
    double sumX = 0.0, sumY = 0.0, sumZ = 0.0;
    for (int k = 1; k <= stencil[0]; ++k) {
      double const value = phi[stencil[k]];
      sumX += value * weights[k].x;
      sumY += value * weights[k].y;
      sumZ += value * weights[k].z;
    }
    gx[i] = sumX;
    gy[i] = sumY;
    gz[i] = sumZ;
  }

  // No exchange: what is not a wall or an inlet comes back as zero beyond the interior cells.
  for (double* g : {gx, gy, gz}) Clear(g, nInnerCells + 1, mesh.NCell);
  // Walls first: a ghost cell that a wall and an inlet share keeps what the inlet gives it.
  auto const copyToGhosts = [=](int count, int const* interior, int const* ghost) {
    for (int f = 1; f <= count; ++f) {
      gx[ghost[f]] = gx[interior[f]];
      gy[ghost[f]] = gy[interior[f]];
      gz[ghost[f]] = gz[interior[f]];
    }
  };
  copyToGhosts(mesh.NWall, mesh.ijWallCV, mesh.ijWall);
  copyToGhosts(mesh.NInlet, mesh.ijInletCV, mesh.ijInlet);
  return kSuccess;
}

int CZynRBFInternalObject::MultiplyRBFCoefficent_InnerfaceFlux(double* phi, double* fx, double* fy,
                                                               double* fz) {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  int const nInnerFaces = mesh.NInnerFaces;
  for (int f = 1; f <= nInnerFaces; ++f) {
    double const first = phi[mesh.ijCV[f]], second = phi[mesh.ij[f]];
    RBFnode const &c1 = m_ppRBFInnerFaceCoef[f][1], &c2 = m_ppRBFInnerFaceCoef[f][2];
    fx[f] = first * c1.x + second * c2.x;
    fy[f] = first * c1.y + second * c2.y;
    fz[f] = first * c1.z + second * c2.z;
  }
  return kSuccess;
}
