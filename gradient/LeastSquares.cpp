// Least-squares gradient: the g that minimises the sum over a cell's neighbours of (g . d - dphi)^2, from the
// normal equations (sum d d^T) g = sum dphi d. @cite barth1989 @cite mavriplis2003
//
// The matrix depends on the mesh alone and is gathered at Initialize, the right-hand side at every gradient.
// Both visit inner faces, partition faces, then boundary groups; ghost centres count as neighbour positions.
// Symmetry faces are in the matrix and not in the right-hand side, which takes dphi = 0 across them.

#include <algorithm>
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

/// Moments and right-hand sides of the cells, [1..NCell] each.
struct NormalEquations {
  double const *xx, *yy, *zz, *xy, *xz, *yz;
  double const *bx, *by, *bz;
};

/// Solutions of a block of cells, and whether each elimination met a pivot of exactly zero.
constexpr int kBlock = 32;
struct BlockSolution {
  double gx[kBlock], gy[kBlock], gz[kBlock];
  int zeroPivot[kBlock];
};

// Gaussian elimination of [xx xy xz | bx; xy yy yz | by; xz yz zz | bz] without row exchange, then
// substitution from the bottom. The first two pivots, xx and yy2, are tested; zero in the last, zz3, gives a
// cell that is not finite. All cells of the block are worked out before any pivot is looked at, so that the
// divisions of several overlap.
void SolveBlock(NormalEquations const& s, int first, int count, BlockSolution& out) {
  for (int k = 0; k < count; ++k) {
    int const i = first + k;
    double const xx = s.xx[i], xy = s.xy[i], xz = s.xz[i], bx = s.bx[i];
    double const yFactor = xy / xx;
    double const zFactor = xz / xx;
    double const yy2 = s.yy[i] - yFactor * xy;
    double const yz2 = s.yz[i] - yFactor * xz;
    double const by2 = s.by[i] - yFactor * bx;
    double const zy2 = s.yz[i] - zFactor * xy;
    double const zz2 = s.zz[i] - zFactor * xz;
    double const bz2 = s.bz[i] - zFactor * bx;
    double const zFactor2 = zy2 / yy2;
    double const zz3 = zz2 - zFactor2 * yz2;
    double const bz3 = bz2 - zFactor2 * by2;
    double const gz = bz3 / zz3;
    double const gy = (by2 - gz * yz2) / yy2;
    out.gz[k] = gz;
    out.gy[k] = gy;
    out.gx[k] = (bx - gy * xy - xz * gz) / xx;
    out.zeroPivot[k] = static_cast<int>(xx == 0.0) | static_cast<int>(yy2 == 0.0);
  }
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
  NormalEquations const system{m_pSxx, m_pSyy, m_pSzz, m_pSxy, m_pSxz, m_pSyz, m_pBx, m_pBy, m_pBz};
  int const nInnerCells = m_pMesh->NInnerCells;
  BlockSolution block;
  for (int first = 1; first <= nInnerCells; first += kBlock) {
    int const count = std::min(kBlock, nInnerCells - first + 1);
    SolveBlock(system, first, count, block);
    int const* const stop =
        std::find_if(block.zeroPivot, block.zeroPivot + count, [](int zero) { return zero != 0; });
    auto const solved = stop - block.zeroPivot;
    std::copy_n(block.gx, solved, gx + first);
    std::copy_n(block.gy, solved, gy + first);
    std::copy_n(block.gz, solved, gz + first);
    if (solved < count) return false;
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
