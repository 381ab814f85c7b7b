// Least-squares gradient: the g that minimises the sum over a cell's neighbours of (g . d - dphi)^2, from the
// normal equations (sum d d^T) g = sum dphi d. @cite barth1989 @cite mavriplis2003
//
// The matrix depends on the mesh alone and is gathered at Initialize, the right-hand side at every gradient.
// Both visit inner faces, partition faces, then boundary groups; ghost centres count as neighbour positions.
// Symmetry faces are in the matrix and not in the right-hand side, which takes dphi = 0 across them.

#include <cstddef>
#include <initializer_list>

#include "foundation/Progress.h"
#include "foundation/WithoutTraps.h"
#include "gradient/COperatorGradientImpl.h"
#include "gradient/TwoFaces.h"
#include "host/Zyn3dGV.h"

namespace {

using two_faces::At;
using two_faces::InCells;
using two_faces::StoreAt;
using two_faces::Two;
using two_faces::TwoCells;

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

enum class Pivots { Fine, Zero, LastIsZero };

// Gaussian elimination of [xx xy xz | bx; xy yy yz | by; xz yz zz | bz] without row exchange, then
// substitution from the bottom, for the cell i or for the cells i and i+1.
//
// A pivot is tested before anything is divided by it, since the solver may have armed a trap for division by zero.
// With two cells, the answer holds if it holds for either; g is set only when all pivots are fine.
template <class Value>
Pivots Solve(NormalEquations const& s, int i, bool acceptLastZero, Value (&g)[3]) {
  Value const xx = At<Value>(s.xx, i), xy = At<Value>(s.xy, i), xz = At<Value>(s.xz, i);
  Value const yy = At<Value>(s.yy, i), yz = At<Value>(s.yz, i), zz = At<Value>(s.zz, i);
  Value const bx = At<Value>(s.bx, i), by = At<Value>(s.by, i), bz = At<Value>(s.bz, i);
  if (two_faces::AnyZero(xx)) return Pivots::Zero;
  Value const yFactor = xy / xx;
  Value const zFactor = xz / xx;
  Value const yy2 = yy - yFactor * xy;
  Value const yz2 = yz - yFactor * xz;
  Value const by2 = by - yFactor * bx;
  Value const zy2 = yz - zFactor * xy;
  Value const zz2 = zz - zFactor * xz;
  Value const bz2 = bz - zFactor * bx;
  if (two_faces::AnyZero(yy2)) return Pivots::Zero;
  Value const zFactor2 = zy2 / yy2;
  Value const zz3 = zz2 - zFactor2 * yz2;
  Value const bz3 = bz2 - zFactor2 * by2;
  if (!acceptLastZero && two_faces::AnyZero(zz3)) return Pivots::LastIsZero;
  g[2] = bz3 / zz3;
  g[1] = (by2 - g[2] * yz2) / yy2;
  g[0] = (bx - g[1] * xy - xz * g[2]) / xx;
  return Pivots::Fine;
}

// Not inlined: a compiler that sees the caller, too, may move the divisions behind the end of its WithoutTraps.
[[gnu::noinline]] void SolveWithZeroLastPivot(NormalEquations const& s, int i, double (&g)[3]) {
  Solve(s, i, true, g);
}

// One cell. A zero in its last pivot is no failure: the cell is not finite then, and no trap stops the program.
// @return false, without an answer, when one of the first two pivots is zero
bool SolveCell(NormalEquations const& s, int i, double (&g)[3]) {
  Pivots const pivots = Solve(s, i, false, g);
  if (pivots == Pivots::LastIsZero) {
    WithoutTraps const whileDividing;
    SolveWithZeroLastPivot(s, i, g);
  }
  return pivots != Pivots::Zero;
}

void ReportZeroPivot() {
  PrintFlushed("aa[ii][j]=0.\n");
  PrintFlushed("4\n");
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
  double const *const xc = mesh.xc, *const yc = mesh.yc, *const zc = mesh.zc;
  double *const bx = m_pBx, *const by = m_pBy, *const bz = m_pBz;

  // dphi * d of the pair (p, q), or of two pairs side by side.
  auto const product = [=](auto p, auto q, auto& rx, auto& ry, auto& rz) {
    auto const dphi = InCells(phi, q) - InCells(phi, p);
    rx = dphi * (InCells(xc, q) - InCells(xc, p));
    ry = dphi * (InCells(yc, q) - InCells(yc, p));
    rz = dphi * (InCells(zc, q) - InCells(zc, p));
  };
  auto const add = [=](double rx, double ry, double rz, int p, int q, Receiver receiver) {
    bx[p] += rx, by[p] += ry, bz[p] += rz;
    if (receiver == Receiver::Both) bx[q] += rx, by[q] += ry, bz[q] += rz;
  };
  auto const gather = [=](CellPairs const pairs, Receiver receiver) {
    int f = 1;
    for (; f < pairs.count; f += 2) {
      TwoCells const p{pairs.first[f], pairs.first[f + 1]}, q{pairs.second[f], pairs.second[f + 1]};
      Two rx, ry, rz;
      product(p, q, rx, ry, rz);
      add(rx[0], ry[0], rz[0], p.first, q.first, receiver);
      add(rx[1], ry[1], rz[1], p.second, q.second, receiver);
    }
    for (; f <= pairs.count; ++f) {
      int const p = pairs.first[f], q = pairs.second[f];
      double rx, ry, rz;
      product(p, q, rx, ry, rz);
      add(rx, ry, rz, p, q, receiver);
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
  auto const store = [=](int i, auto const& g) {
    StoreAt(gx, i, g[0]), StoreAt(gy, i, g[1]), StoreAt(gz, i, g[2]);
  };
  int const nInnerCells = m_pMesh->NInnerCells;
  Two gOfTwo[3];
  double g[3] = {};
  for (int i = 1; i <= nInnerCells;) {
    if (i < nInnerCells && Solve(system, i, false, gOfTwo) == Pivots::Fine) {
      store(i, gOfTwo);
      i += 2;
      continue;
    }
    // The last cell of an odd number, or the first of two of which one has a zero pivot.
    if (!SolveCell(system, i, g)) return false;
    store(i, g);
    ++i;
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
