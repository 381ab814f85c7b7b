// Least-squares gradient: the g that minimises the sum over a cell's neighbours of (g . d - dphi)^2, from the
// normal equations (sum d d^T) g = sum dphi d. @cite barth1989 @cite mavriplis2003
//
// The matrix depends on the mesh alone and is gathered at Initialize, the right-hand side at every gradient.
// Both visit inner faces, partition faces, then boundary groups; ghost centres count as neighbour positions.
// Symmetry faces are in the matrix and not in the right-hand side, which takes dphi = 0 across them.

#include <iostream>

#include "gradient/COperatorGradientImpl.h"
#include "host/Zyn3dGV.h"

namespace {

/// Pairs of cells over the faces of a group, [1..count] each.
struct CellPairs {
  int count;
  int const* first;
  int const* second;
};

struct Offset {
  double dx, dy, dz;
};

Offset OffsetBetween(CZYN3DFiniteVolumeMesh const& mesh, int p, int q) {
  return {mesh.xc[q] - mesh.xc[p], mesh.yc[q] - mesh.yc[p], mesh.zc[q] - mesh.zc[p]};
}

enum class Receiver { Both, FirstOnly };

double* ZeroedCellArray(int nCell) { return new double[static_cast<std::size_t>(nCell) + 1](); }

/// The 3x4 system of one cell, aa[1..3][1..4] with the right-hand side in column 4.
using AugmentedMatrix = double[4][5];

// Gaussian elimination without row exchange, column by column; entries below a pivot are neither cleared nor
// read again. The last pivot is not tested: zero there gives a cell that is not finite.
// @return false on a pivot of exactly zero
bool EliminateForward(AugmentedMatrix& aa) {
  for (int ii = 2; ii <= 3; ++ii) {
    double const pivot = aa[ii - 1][ii - 1];
    if (pivot == 0.0) return false;
    for (int j = ii; j <= 3; ++j) {
      double const factor = aa[j][ii - 1] / pivot;
      for (int k = ii; k <= 4; ++k) aa[j][k] -= factor * aa[ii - 1][k];
    }
  }
  return true;
}

void ReportZeroPivot() {
  std::cout << "aa[ii][j]=0." << std::endl;
  std::cout << 4 << std::endl;
}

}  // namespace

void COperatorGradientImpl::GatherLeastSquaresMoments() {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  int const nCell = mesh.NCell;
  // A repeated set-up leaves the former arrays behind.
  for (double** array : {&m_pSxx, &m_pSyy, &m_pSzz, &m_pSxy, &m_pSxz, &m_pSyz, &m_pBx, &m_pBy, &m_pBz})
    *array = ZeroedCellArray(nCell);

  double *const sxx = m_pSxx, *const syy = m_pSyy, *const szz = m_pSzz;
  double *const sxy = m_pSxy, *const sxz = m_pSxz, *const syz = m_pSyz;
#pragma omp parallel for schedule(static)
  for (int i = 1; i <= nCell; ++i) {
    sxx[i] = 0.0, syy[i] = 0.0, szz[i] = 0.0;
    sxy[i] = 0.0, sxz[i] = 0.0, syz[i] = 0.0;
  }

  auto const gather = [&](CellPairs const& pairs, Receiver receiver) {
    for (int f = 1; f <= pairs.count; ++f) {
      int const p = pairs.first[f], q = pairs.second[f];
      auto const [dx, dy, dz] = OffsetBetween(mesh, p, q);
      double const xx = dx * dx, yy = dy * dy, zz = dz * dz;
      double const xy = dy * dx, xz = dz * dx, yz = dz * dy;
      sxx[p] += xx, syy[p] += yy, szz[p] += zz, sxy[p] += xy, sxz[p] += xz, syz[p] += yz;
      if (receiver == Receiver::Both)
        sxx[q] += xx, syy[q] += yy, szz[q] += zz, sxy[q] += xy, sxz[q] += xz, syz[q] += yz;
    }
  };
  gather({mesh.NInnerFaces, mesh.ijCV, mesh.ij}, Receiver::Both);
  gather({m_pPartFace->NParInterFace(), m_pPartFace->ijParCV(), m_pPartFace->ijPar()}, Receiver::Both);
  gather({mesh.NInlet, mesh.ijInletCV, mesh.ijInlet}, Receiver::FirstOnly);
  gather({mesh.NOutlet, mesh.ijOutletCV, mesh.ijOutlet}, Receiver::FirstOnly);
  gather({mesh.NWall, mesh.ijWallCV, mesh.ijWall}, Receiver::FirstOnly);
  gather({mesh.NSymmetry, mesh.ijSymmetryCV, mesh.ijSymmetry}, Receiver::FirstOnly);
}

void COperatorGradientImpl::ClearLeastSquaresSums(double* gx, double* gy, double* gz) {
  int const nCell = m_pMesh->NCell;
  double *const bx = m_pBx, *const by = m_pBy, *const bz = m_pBz;
#pragma omp parallel for schedule(static)
  for (int i = 1; i <= nCell; ++i) {
    gx[i] = 0.0, gy[i] = 0.0, gz[i] = 0.0;
    bx[i] = 0.0, by[i] = 0.0, bz[i] = 0.0;
  }
}

// Halo cells gather no right-hand side, as nobody would solve theirs; symmetry faces are left out on purpose.
void COperatorGradientImpl::GatherLeastSquaresRightHandSides(double const* phi) {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  double *const bx = m_pBx, *const by = m_pBy, *const bz = m_pBz;
  auto const gather = [&](CellPairs const& pairs, Receiver receiver) {
    for (int f = 1; f <= pairs.count; ++f) {
      int const p = pairs.first[f], q = pairs.second[f];
      auto const [dx, dy, dz] = OffsetBetween(mesh, p, q);
      double const dphi = phi[q] - phi[p];
      double const rx = dphi * dx, ry = dphi * dy, rz = dphi * dz;
      bx[p] += rx, by[p] += ry, bz[p] += rz;
      if (receiver == Receiver::Both) bx[q] += rx, by[q] += ry, bz[q] += rz;
    }
  };
  gather({mesh.NInnerFaces, mesh.ijCV, mesh.ij}, Receiver::Both);
  gather({m_pPartFace->NParInterFace(), m_pPartFace->ijParCV(), m_pPartFace->ijPar()}, Receiver::FirstOnly);
  gather({mesh.NInlet, mesh.ijInletCV, mesh.ijInlet}, Receiver::FirstOnly);
  gather({mesh.NOutlet, mesh.ijOutletCV, mesh.ijOutlet}, Receiver::FirstOnly);
  gather({mesh.NWall, mesh.ijWallCV, mesh.ijWall}, Receiver::FirstOnly);
}

// @return false when a cell's pivot is zero; that cell and the later ones then keep 0.0
bool COperatorGradientImpl::SolveLeastSquares(double* gx, double* gy, double* gz) const {
  int const nInnerCells = m_pMesh->NInnerCells;
  for (int i = 1; i <= nInnerCells; ++i) {
    double const xx = m_pSxx[i], yy = m_pSyy[i], zz = m_pSzz[i];
    double const xy = m_pSxy[i], xz = m_pSxz[i], yz = m_pSyz[i];
    AugmentedMatrix aa = {
        {0}, {0, xx, xy, xz, m_pBx[i]}, {0, xy, yy, yz, m_pBy[i]}, {0, xz, yz, zz, m_pBz[i]}};
    if (!EliminateForward(aa)) return false;
    gz[i] = aa[3][4] / aa[3][3];
    gy[i] = (aa[2][4] - gz[i] * aa[2][3]) / aa[2][2];
    gx[i] = (aa[1][4] - gy[i] * aa[1][2] - aa[1][3] * gz[i]) / aa[1][1];
  }
  return true;
}

void COperatorGradientImpl::LeastSquares(double const* phi, double* gx, double* gy, double* gz) {
  ClearLeastSquaresSums(gx, gy, gz);
  GatherLeastSquaresRightHandSides(phi);
  if (!SolveLeastSquares(gx, gy, gz)) {
    // The one place where a partition leaves before the exchange: partitions without such a cell go on to
    // wait in it.
    ReportZeroPivot();
    return;
  }
  ExchangeThree(gx, gy, gz);
}
