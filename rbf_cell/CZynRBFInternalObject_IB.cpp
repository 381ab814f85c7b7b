// The cell operator's own operations for immersed-boundary points: as far as they go.

#include <algorithm>
#include <cstddef>
#include <memory>

#include "foundation/BoundingBox.h"
#include "foundation/CellPositions.h"
#include "foundation/DQKernel.h"
#include "foundation/GrowingBoxSearch.h"
#include "foundation/KernelSystem.h"
#include "foundation/Progress.h"
#include "foundation/WithoutTraps.h"
#include "foundation/ZeroedBlock.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"
#include "rbf_cell/CZynRBFInternalObject.h"

namespace {

enum SearchMethod : int { kFixedCube = 1, kGrowingCube = 2 };

constexpr int kResetBlockSize = 4;

// Rows 0..nPoint, all null.
template <typename T>
std::unique_ptr<T* []> NewPointTable(int nPoint) {
  return std::unique_ptr<T*[]>(new T*[static_cast<std::size_t>(std::max(nPoint, 0)) + 1]());
}

// Element 0 and n elements behind it, in place of a former row.
template <typename T>
void RenewRow(T*& row, int n) {
  delete[] row;
  row = nullptr;  // there may be no memory for the new one
  row = new T[static_cast<std::size_t>(n) + 1]();
}

}  // namespace

int CZynRBFInternalObject::Initialize_IBInterpolateData(double* pCellMark, int nIB, double*, double*, double*,
                                                        int, double, int) {
  WithoutTraps const duringSetUp;
  ChangeFileName(m_szRBFFileName, ".rbf", m_pGV->BaseFileName);
  ReadRBFbackdoorfile();
  CreateIBTables(nIB);
  int const nCell = m_pMesh->NCell;
  CZYNOptKer tree;
  std::vector<int> cellToBlock(static_cast<std::size_t>(nCell) + 1, 0);
  m_pRBFnode = NewZeroedArray<RBFnode>(nCell);
  m_piNodeKind = NewZeroedArray<int>(nCell);
  std::vector<int> const cells(1, 0);
  PrintFlushed("IB Memory Allocation ok\n");
  SetIBNodeCollation();
  PrintFlushed("SetNodeCollation ok\n");
  tree.SetADTreeRange(m_dBoundMax[0], m_dBoundMax[1], m_dBoundMax[2], m_dBoundMin[0], m_dBoundMin[1],
                      m_dBoundMin[2], 1, 10000, 200000);
  SetIBADTress(pCellMark, cells, tree, cellToBlock.data());
  return 0;
}

// Tables of an earlier set-up are left behind. The number of points and the tables change together, since the destructor
// frees that many rows.
void CZynRBFInternalObject::CreateIBTables(int nIB) {
  auto conn = NewPointTable<int>(nIB);
  auto coef = NewPointTable<RBFnode>(nIB);
  auto valueCoef = NewPointTable<double>(nIB);
  m_iNIBNode = nIB;
  m_ppIBConn = conn.release();
  m_ppIBCoef = coef.release();
  m_ppIBValueCoef = valueCoef.release();
}

int CZynRBFInternalObject::SetIBNodeCollation() {
  WithoutTraps const duringSetUp;
  MeshExtent const extent = MeasureExtent(*m_pMesh);
  m_dBoundMax[0] = extent.box.xmax, m_dBoundMax[1] = extent.box.ymax, m_dBoundMax[2] = extent.box.zmax;
  m_dBoundMin[0] = extent.box.xmin, m_dBoundMin[1] = extent.box.ymin, m_dBoundMin[2] = extent.box.zmin;
  m_dMeanCellDistance = extent.meanDistance;

  for (int k = 1; k <= kResetBlockSize; ++k) {
    m_pGV->ResetRealBlock[k] = 0.0;
    m_pGV->ResetIntBlock[k] = 0;
  }
  PlaceCells(*m_pMesh, *m_pPartFace, [this](int c, double x, double y, double z, CellKind kind) {
    m_pRBFnode[c].Set(x, y, z, c);
    m_piNodeKind[c] = static_cast<int>(kind);
  });
  return 1;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): what is handed over belongs to the operation
int CZynRBFInternalObject::SetIBADTress(double*, std::vector<int>, CZYNOptKer, int*) {
  for (int icell = 1; icell <= m_pMesh->NCell; ++icell) {
    PrintFormatted("*pGV->NCell = %d\n", m_pMesh->NCell);
    PrintFormatted("icell = %d\n", icell);
  }
  return 0;
}

int CZynRBFInternalObject::SearchIBADTress(double* x, double*, double*, int iMethod, double dDistance,
                                           int iNumber, int* piBlockToCell, CZYNOptKer tree,
                                           double* pSupport) {
  WithoutTraps const duringSetUp;
  // Without points there may be no mesh and no positions either.
  BoundingBox const bounds = iMethod == kGrowingCube && m_iNIBNode > 0 ? BoundsOfCells() : BoundingBox();
  GrowingBoxSearch const search(tree, bounds, m_dMeanCellDistance);
  for (int i = 1; i <= m_iNIBNode; ++i) {
    double const c = x[i];  // of all three axes, on purpose
    GrowingBoxSearch::Answer found = {nullptr, 0, 0.0};
    if (iMethod == kFixedCube) {
      double const r = dDistance;
      found.halfWidth = r;
      found.ids = tree.SearchNearBlockID(c - r, c - r, c - r, c + r, c + r, c + r, found.count, 0);
    } else if (iMethod == kGrowingCube) {
      found = search.AtLeast(iNumber, c, c, c);
    }
    RenewRow(m_ppIBConn[i], found.count);
    RenewRow(m_ppIBCoef[i], found.count);
    RenewRow(m_ppIBValueCoef[i], found.count);
    m_ppIBConn[i][0] = found.count;
    for (int k = 0; k < found.count; ++k) m_ppIBConn[i][k + 1] = piBlockToCell[found.ids[k]];
    pSupport[i] = found.halfWidth;
  }
  return 0;
}

// The tree is the caller's, and nobody says where it has the cells: at the points that this operator gives them,
// or at the mesh's centres. A cube that covers both should have them all.
BoundingBox CZynRBFInternalObject::BoundsOfCells() const {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  BoundingBox bounds;
  for (int c = 1; c <= mesh.NCell; ++c) {
    bounds.Widen(m_pRBFnode[c].x, m_pRBFnode[c].y, m_pRBFnode[c].z);
    bounds.Widen(mesh.xc[c], mesh.yc[c], mesh.zc[c]);
  }
  return bounds;
}

int CZynRBFInternalObject::DeriveIBCoefficentBysolveDQfullMatrix(int i, double* x, double* y, double* z,
                                                                 double* pSupport) {
  WithoutTraps const duringSetUp;
  int const* const stencil = m_ppIBConn[i];
  KernelSystem system;
  for (int k = 1; k <= stencil[0]; ++k) {
    RBFnode const& node = m_pRBFnode[stencil[k]];
    system.Add({node.x, node.y, node.z});
  }
  double const* w =
      system.SolveForGradientAndValue(InterpolationDQKernel(Span, pSupport[i]), {x[i], y[i], z[i]});
  for (int k = 1; k <= stencil[0]; ++k, w += 4) {
    m_ppIBCoef[i][k].Set(w[0], w[1], w[2], i);
    m_ppIBValueCoef[i][k] = w[3];
  }
  return 1;
}

int CZynRBFInternalObject::Multiply_IBRBFCoefficent(double*, double* pValue, double* pDfdx, double* pDfdy,
                                                    double* pDfdz) {
  for (int i = 1; i <= m_iNIBNode; ++i) pValue[i] = pDfdx[i] = pDfdy[i] = pDfdz[i] = 0.0;
  return 0;
}
