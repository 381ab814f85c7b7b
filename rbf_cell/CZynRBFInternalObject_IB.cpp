// The cell operator's own operations for immersed-boundary points. They do not make a working path: see the header.

#include <cstddef>
#include <vector>

#include "foundation/BoundingBox.h"
#include "foundation/CellPositions.h"
#include "foundation/DQKernel.h"
#include "foundation/GrowingBoxSearch.h"
#include "foundation/KernelSystem.h"
#include "foundation/Progress.h"
#include "foundation/Status.h"
#include "foundation/WithoutTraps.h"
#include "foundation/ZeroedBlock.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"
#include "rbf_cell/CZynRBFInternalObject.h"
#include "rbf_cell/PointTable.h"

namespace {

enum SearchMethod : int { kFixedCube = 1, kGrowingCube = 2 };

constexpr int kResetBlockSize = 4;

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
  return Status::kDone;
}

// The tables of an earlier set-up are left behind, since a copy of the object may still read them. The number of
// points changes together with the tables: the destructor frees that many rows.
void CZynRBFInternalObject::CreateIBTables(int nIB) {
  auto conn = PointTable<int>::Create(nIB);
  auto coef = PointTable<RBFnode>::Create(nIB);
  auto valueCoef = PointTable<double>::Create(nIB);
  m_iNIBNode = nIB;
  m_ppIBConn = conn.release();
  m_ppIBCoef = coef.release();
  m_ppIBValueCoef = valueCoef.release();
}

int CZynRBFInternalObject::SetIBNodeCollation() {
  WithoutTraps const duringSetUp;
  StoreExtent(MeasureExtent(*m_pMesh));
  for (int k = 1; k <= kResetBlockSize; ++k) {
    m_pGV->ResetRealBlock[k] = 0.0;
    m_pGV->ResetIntBlock[k] = 0;
  }
  PlaceCells(*m_pMesh, *m_pPartFace, [this](int c, double x, double y, double z, FaceKind kind) {
    m_pRBFnode[c].Set(x, y, z, c);
    m_piNodeKind[c] = static_cast<int>(kind);
  });
  return Status::kSuccess;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature takes its arguments by value
int CZynRBFInternalObject::SetIBADTress(double*, std::vector<int>, CZYNOptKer, int*) {
  for (int icell = 1; icell <= m_pMesh->NCell; ++icell) {
    PrintFormatted("*pGV->NCell = %d\n", m_pMesh->NCell);
    PrintFormatted("icell = %d\n", icell);
  }
  return Status::kDone;
}

int CZynRBFInternalObject::SearchIBADTress(double* x, double*, double*, int iMethod, double dDistance,
                                           int iNumber, int* piBlockToCell, CZYNOptKer tree,
                                           double* pSupport) {
  WithoutTraps const duringSetUp;
  // Without points there need not be a mesh or any positions.
  BoundingBox const bounds = iMethod == kGrowingCube && m_iNIBNode > 0 ? BoundsOfCells() : BoundingBox();
  GrowingBoxSearch const search(tree, bounds, m_dMeanCellDistance);
  for (int i = 1; i <= m_iNIBNode; ++i) {
    double const c = x[i];  // on all three axes, see the header
    GrowingBoxSearch::Answer found = {nullptr, 0, 0.0};
    if (iMethod == kFixedCube) {
      double const r = dDistance;
      found.halfWidth = r;
      found.ids = tree.SearchNearBlockID(c - r, c - r, c - r, c + r, c + r, c + r, found.count, 0);
    } else if (iMethod == kGrowingCube) {
      found = search.AtLeast(iNumber, c, c, c);
    }
    PointTable<int>::Renew(m_ppIBConn[i], found.count);
    PointTable<RBFnode>::Renew(m_ppIBCoef[i], found.count);
    PointTable<double>::Renew(m_ppIBValueCoef[i], found.count);
    m_ppIBConn[i][0] = found.count;
    for (int k = 0; k < found.count; ++k) m_ppIBConn[i][k + 1] = piBlockToCell[found.ids[k]];
    pSupport[i] = found.halfWidth;
  }
  return Status::kDone;
}

// The tree belongs to the caller, who may have put the cells at the points that this operator gives them or at the
// mesh's centres. A cube that covers both holds them all.
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
  double const* w = system.SolveForGradientAndValue(PlainDQKernel(Span, pSupport[i]), {x[i], y[i], z[i]});
  for (int k = 1; k <= stencil[0]; ++k, w += 4) {
    m_ppIBCoef[i][k].Set(w[0], w[1], w[2], i);
    m_ppIBValueCoef[i][k] = w[3];
  }
  return Status::kSuccess;
}

int CZynRBFInternalObject::Multiply_IBRBFCoefficent(double*, double* pValue, double* pDfdx, double* pDfdy,
                                                    double* pDfdz) {
  for (int i = 1; i <= m_iNIBNode; ++i) pValue[i] = pDfdx[i] = pDfdy[i] = pDfdz[i] = 0.0;
  return Status::kDone;
}
