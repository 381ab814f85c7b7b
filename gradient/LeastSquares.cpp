// Least-squares gradient: the g_c that minimises the sum over the neighbours n of cell c of (g_c . d - dphi)^2
//
//   M_c g_c = b_c,    M_c = sum over n of d d^T,    b_c = sum over n of dphi d        (normal equations)
//
//   d = x_n - x_c,    dphi = phi_n - phi_c
//
// The neighbours are the cells beyond the faces of c, ghost and halo cells included, with equal weights.
// @cite barth1989 @cite mavriplis2003
//
// M depends on the mesh alone and is gathered at Initialize, b at every gradient. Symmetry faces are in M and not in b,
// which takes dphi as 0 across them. d and dphi change their signs from one cell of a face to the other, the products
// do not: both cells take the same.
//
// On a mesh in good order, one walk does everything: the system of a cell is solved as soon as its last face has passed,
// and three fields share the walk and the elimination. Otherwise all right-hand sides are gathered first.

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <memory>

#include "foundation/Progress.h"
#include "gradient/COperatorGradientImpl.h"
#include "gradient/ClearingThreads.h"
#include "gradient/LeastSquaresWalk.h"
#include "gradient/NormalEquations.h"
#include "gradient/PairWalk.h"
#include "host/Zyn3dGV.h"

namespace {

double* ZeroedCellArray(int nCell) { return new double[static_cast<std::size_t>(nCell) + 1](); }

/// Sets the cells first..last of the arrays to zero. Block by block, since one array after the other is cleared fastest.
void ClearCells(std::array<double*, 6> const& arrays, int first, int last) {
  constexpr int kBlock = 4096;
  int const nBlocks = (last - first + kBlock) / kBlock;
  int const nThreads = ClearingThreads(last - first + 1);
#pragma omp parallel for schedule(static) num_threads(nThreads) if (nThreads > 1)
  for (int block = 0; block < nBlocks; ++block) {
    int const begin = first + block * kBlock, end = std::min(begin + kBlock, last + 1);
    for (double* array : arrays) std::fill(array + begin, array + end, 0.0);
  }
}

/// dphi d of a face, with d and dphi from `cv` to `other`.
struct DifferenceTimesOffset {
  double const *phi, *xc, *yc, *zc;

  template <class Face>
  [[gnu::always_inline]] auto operator()(Face const& face) const {
    auto const dphi = face.InOther(phi) - face.InCv(phi);
    auto const dx = face.InOther(xc) - face.InCv(xc);
    auto const dy = face.InOther(yc) - face.InCv(yc);
    auto const dz = face.InOther(zc) - face.InCv(zc);
    return normal_equations::Vector<decltype(dphi * dx)>{dphi * dx, dphi * dy, dphi * dz};
  }
};

using normal_equations::Systems;

void ReportZeroPivot() {
  PrintFlushed("aa[ii][j]=0.\n");
  PrintFlushed("4\n");
}

}  // namespace

// A repeated set-up leaves the former arrays behind.
void COperatorGradientImpl::AllocateLeastSquaresArrays() {
  for (double** array : {&m_pSxx, &m_pSyy, &m_pSzz, &m_pSxy, &m_pSxz, &m_pSyz, &m_pBx, &m_pBy, &m_pBz})
    *array = ZeroedCellArray(m_pMesh->NCell);
}

void COperatorGradientImpl::FreeLeastSquaresArrays() {
  for (double** array : {&m_pSxx, &m_pSyy, &m_pSzz, &m_pSxy, &m_pSxz, &m_pSyz, &m_pBx, &m_pBy, &m_pBz}) {
    delete[] * array;
    *array = nullptr;
  }
  m_pPlan.reset();
}

normal_equations::Matrices COperatorGradientImpl::LeastSquaresMatrices() const {
  return {m_pSxx, m_pSyy, m_pSzz, m_pSxy, m_pSxz, m_pSyz};
}

void COperatorGradientImpl::GatherLeastSquaresMoments() {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  int const nCell = mesh.NCell;
  double *const sxx = m_pSxx, *const syy = m_pSyy, *const szz = m_pSzz;
  double *const sxy = m_pSxy, *const sxz = m_pSxz, *const syz = m_pSyz;
  ClearCells({sxx, syy, szz, sxy, sxz, syz}, 1, nCell);

  // M_cv += d d^T, and M_other += d d^T between cells
  FaceGroups const faces(mesh, PartitionFaceCells(*m_pPartFace));
  for (FaceGroup const& group : faces.InLeastSquaresOrder()) {
    for (int f = 1; f <= group.count; ++f) {
      int const cv = group.cv[f], other = group.other[f];
      double const dx = mesh.xc[other] - mesh.xc[cv];
      double const dy = mesh.yc[other] - mesh.yc[cv];
      double const dz = mesh.zc[other] - mesh.zc[cv];
      double const xx = dx * dx, yy = dy * dy, zz = dz * dz;
      double const xy = dy * dx, xz = dz * dx, yz = dz * dy;
      sxx[cv] += xx, syy[cv] += yy, szz[cv] += zz, sxy[cv] += xy, sxz[cv] += xz, syz[cv] += yz;
      if (IsBoundary(group.kind)) continue;
      sxx[other] += xx, syy[other] += yy, szz[other] += zz, sxy[other] += xy, sxz[other] += xz,
          syz[other] += yz;
    }
  }
}

// Where the faces go belongs to the set-up: points may move, but each face keeps its cells.
void COperatorGradientImpl::PlanLeastSquaresWalk() {
  m_pPlan =
      std::make_unique<LeastSquaresPlan>(*m_pMesh, FaceGroups(*m_pMesh, PartitionFaceCells(*m_pPartFace)));
}

void COperatorGradientImpl::ClearLeastSquaresSums(int first, double* gx, double* gy, double* gz) {
  ClearCells({gx, gy, gz, m_pBx, m_pBy, m_pBz}, first, m_pMesh->NCell);
}

/// @return whether all systems have been solved
bool COperatorGradientImpl::GatherThenSolve(FaceGroups const& faces, double const* phi, double* gx,
                                            double* gy, double* gz) {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  ClearLeastSquaresSums(1, gx, gy, gz);

  // b_cv += dphi d, and b_other += dphi d between interior cells: nobody solves the systems of halo and ghost cells
  DifferenceTimesOffset const product{phi, mesh.xc, mesh.yc, mesh.zc};
  face_walk::VectorSums const b{m_pBx, m_pBy, m_pBz};
  for (FaceGroup const& group : faces.InLeastSquaresOrder()) {
    if (group.kind == FaceKind::Inner)
      AddToBoth(group, product, b);
    else if (group.kind != FaceKind::Symmetry)
      AddToCv(group, product, b);
  }

  // g_c = M_c^-1 b_c
  Systems<1> const systems{LeastSquaresMatrices(), {{{{m_pBx, m_pBy, m_pBz}, {gx, gy, gz}}}}};
  return SolveCells(systems, 1, mesh.NInnerCells) > mesh.NInnerCells;
}

void COperatorGradientImpl::LeastSquares(double const* phi, double* gx, double* gy, double* gz) {
  FaceGroups const faces(*m_pMesh, PartitionFaceCells(*m_pPartFace));
  bool solved;
  if (m_pPlan->Serves(*m_pMesh, faces)) {
    int const nCells = m_pPlan->schedule().nCells;
    Systems<1> const systems{LeastSquaresMatrices(), {{{{m_pBx, m_pBy, m_pBz}, {gx, gy, gz}}}}};
    int const unsolved =
        LeastSquaresWalk<1>(*m_pPlan, *m_pMesh, faces.BetweenCells()[0], {phi}, systems).SolveAll();
    solved = unsolved > m_pMesh->NInnerCells;
    for (double* g : {gx, gy, gz}) std::fill(g + unsolved, g + nCells + 1, 0.0);
    ClearLeastSquaresSums(nCells + 1, gx, gy, gz);
  } else {
    solved = GatherThenSolve(faces, phi, gx, gy, gz);
  }
  if (!solved) {
    // The one place where a partition leaves before the exchange: partitions without such a cell go on and wait in it.
    ReportZeroPivot();
    return;
  }
  ExchangeResult(gx, gy, gz);
}

// The outputs hold the right-hand sides until their cell is solved.
void COperatorGradientImpl::ThreeComponentLeastSquares(double const* const phi[3], double* const g9[9]) {
  FaceGroups const faces(*m_pMesh, PartitionFaceCells(*m_pPartFace));
  bool solved = true;
  if (m_pPlan->Serves(*m_pMesh, faces)) {
    Systems<3> systems{LeastSquaresMatrices(), {}};
    std::array<double*, 9> g;
    std::copy(g9, g9 + 9, g.begin());
    for (std::size_t k = 0; k < 3; ++k) {
      normal_equations::Vectors const ofField{g[3 * k], g[3 * k + 1], g[3 * k + 2]};
      systems.fields[k] = {ofField, ofField};
    }
    LeastSquaresWalk<3> walk(*m_pPlan, *m_pMesh, faces.BetweenCells()[0], {phi[0], phi[1], phi[2]}, systems);
    int const unsolved = walk.SolveAll();
    solved = unsolved > m_pMesh->NInnerCells;
    for (double* component : g) std::fill(component + unsolved, component + m_pMesh->NCell + 1, 0.0);
  } else {
    for (int k = 0; k < 3; ++k)
      solved = GatherThenSolve(faces, phi[k], g9[3 * k], g9[3 * k + 1], g9[3 * k + 2]) && solved;
  }
  if (!solved) {
    ReportZeroPivot();
    return;
  }
  ExchangeResult(g9);
}
