// Where the cell numbers stand, which cells are around a mesh node, and the search tree of the usable cells.

#include <algorithm>
#include <vector>

#include "foundation/CellPositions.h"
#include "foundation/FaceGroups.h"
#include "foundation/NodeCellRows.h"
#include "foundation/RowTable.h"
#include "foundation/Status.h"
#include "foundation/ZeroedBlock.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace {

constexpr double kBoxHalfWidth = 1e-6;  // L; a point as a box of the tree

bool IsUsable(double mark) { return mark < 0.0; }

}  // namespace

int CZynIBRBFInternalObject::SetIBNodeCollation() {
  MeshExtent const extent = MeasureExtent(*m_pMesh);
  Xmax = extent.box.xmax, Ymax = extent.box.ymax, Zmax = extent.box.zmax;
  Xmin = extent.box.xmin, Ymin = extent.box.ymin, Zmin = extent.box.zmin;
  MeanDistance = extent.meanDistance;
  m_pADTree->SetADTreeRange(Xmax, Ymax, Zmax, Xmin, Ymin, Zmin, 1, 10000, 200000);
  PlaceCells(*m_pMesh, *m_pPartFace, [this](int c, double x, double y, double z, FaceKind kind) {
    m_pIBCnode[c].SetData(x, y, z, c);
    m_piNodeKind[c] = static_cast<int>(kind);
  });
  MarkBoundaryNodes();
  return Status::kSuccess;
}

// Nodes that only symmetry or partition faces have are not marked: the rows of cells around nodes are defined so.
void CZynIBRBFInternalObject::MarkBoundaryNodes() {
  m_bBoundaryNode.Create(m_pMesh->NNode, false);
  bool* const isBoundary = m_bBoundaryNode.Get_Ptr();
  for (FaceKind const kind : {FaceKind::Wall, FaceKind::Inlet, FaceKind::Outlet}) {
    FaceGroup const faces = FacesOf(kind, *m_pMesh);
    for (int f = 1; f <= faces.count; ++f) {
      int const* const nodes = faces.nodes[f];
      for (int k = 1; k <= nodes[0]; ++k) isBoundary[nodes[k]] = true;
    }
  }
}

int CZynIBRBFInternalObject::Create_ppRBFiNodeConn(double* pCellMark) {
  RowTable<int>::Destroy(ppRBFiNodeConn);
  bool const* const isBoundary = m_bBoundaryNode.Get_Ptr();
  ppRBFiNodeConn = CreateNodeCellRows(
      *m_pMesh, [isBoundary](int node) { return isBoundary[node]; },
      [pCellMark](int c) { return IsUsable(pCellMark[c]); });
  return Status::kDone;
}

int CZynIBRBFInternalObject::SetIBADTress(double* pCellMark) {
  constexpr double d = kBoxHalfWidth;
  std::vector<int> cellOf = {0};  // by identity
  int const nCell = m_pMesh->NCell;
  for (int c = 1; c <= nCell; ++c) {
    if (!IsUsable(pCellMark[c]) || m_piCellToBlock[c] != 0) continue;
    int const block = static_cast<int>(cellOf.size());
    m_piCellToBlock[c] = block;
    cellOf.push_back(c);
    IBCnode const& p = m_pIBCnode[c];
    m_pADTree->AddSurfaceToADTree(block, p.x + d, p.y + d, p.z + d, p.x - d, p.y - d, p.z - d);
  }
  FreeZeroedBlock(m_piBlockToCell);
  m_piBlockToCell = NewZeroedArray<int>(static_cast<int>(cellOf.size()) - 1);
  std::copy(cellOf.begin(), cellOf.end(), m_piBlockToCell);
  return Status::kDone;
}
