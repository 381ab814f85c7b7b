// Where the cell numbers stand, and the stencils of the interior cells.

#include <algorithm>
#include <cmath>

#include "foundation/BoundingBox.h"
#include "foundation/CellPositions.h"
#include "foundation/DQVector.h"
#include "foundation/FaceGroups.h"
#include "foundation/Progress.h"
#include "foundation/Status.h"
#include "foundation/WithoutTraps.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"
#include "rbf_cell/CZynRBFInternalObject.h"

namespace {

constexpr double kBoxHalfWidth = 1e-6;  // L; a point as a box of the tree

char const* PlacedMessage(FaceKind kind) {
  switch (kind) {
    case FaceKind::Inner:
      return "NInnerCells ok!\n";
    case FaceKind::Wall:
      return "NWall ok!\n";
    case FaceKind::Inlet:
      return "NInlet ok!\n";
    case FaceKind::Outlet:
      return "NOutlet ok!\n";
    default:
      return "pPartFace ok!\n";
  }
}

}  // namespace

int CZynRBFInternalObject::SetNodeCollation() {
  WithoutTraps const duringSetUp;
  MeasureBounds();
  m_pADTree->SetADTreeRange(m_dBoundMax[0], m_dBoundMax[1], m_dBoundMax[2], m_dBoundMin[0], m_dBoundMin[1],
                            m_dBoundMin[2], 1, 10000, 200000);
  PrintFlushed("NInlet ok!\n");
  CollateAll();
  return Status::kSuccess;
}

// MeasureExtent, with a line after each of its parts.
void CZynRBFInternalObject::MeasureBounds() {
  MeshExtent extent = MeasureInnerFaces(*m_pMesh);
  PrintFlushed("NInnerFaces ok!\n");
  WidenByFaceCentres(FaceKind::Wall, *m_pMesh, extent.box);
  PrintFlushed("NWall ok!\n");
  WidenByFaceCentres(FaceKind::Inlet, *m_pMesh, extent.box);
  StoreExtent(extent);
}

void CZynRBFInternalObject::StoreExtent(MeshExtent const& extent) {
  BoundingBox const& box = extent.box;
  m_dBoundMax[0] = box.xmax, m_dBoundMax[1] = box.ymax, m_dBoundMax[2] = box.zmax;
  m_dBoundMin[0] = box.xmin, m_dBoundMin[1] = box.ymin, m_dBoundMin[2] = box.zmin;
  m_dMeanCellDistance = extent.meanDistance;
}

void CZynRBFInternalObject::CollateAll() {
  constexpr double d = kBoxHalfWidth;
  for (FaceKind const ofKind : kPlacedKinds) {
    int index = 0;
    PlaceCells(ofKind, *m_pMesh, *m_pPartFace, [&](int c, double x, double y, double z, FaceKind kind) {
      m_pADTree->AddSurfaceToADTree(c, x + d, y + d, z + d, x - d, y - d, z - d);
      m_pRBFnode[c].Set(x, y, z, c);
      m_piNodeKind[c] = static_cast<int>(kind);
      m_piNodeKindIndex[c] = ++index;
    });
    PrintFlushed(PlacedMessage(ofKind));
  }
}

int CZynRBFInternalObject::SetCellToCellconnection() {
  WithoutTraps const duringSetUp;
  int const nInnerCells = m_pMesh->NInnerCells;
  for (int i = 1; i <= nInnerCells; ++i) CollectStencil(i);
  return Status::kSuccess;
}

// The cell, then its neighbours in the mesh's order. Nothing is sorted, dropped or compared with a distance.
void CZynRBFInternalObject::CollectStencil(int i) {
  int const* const neighbours = m_pMesh->CellCell[i];
  int* const stencil = m_ppRBFCellConn[i];
  RBFnode const& centre = m_pRBFnode[i];

  stencil[0] = neighbours[0] + 1;
  stencil[1] = i;
  BoundingBox box;
  box.Widen(centre.x, centre.y, centre.z);
  double largest2 = 0.0;
  for (int k = 1; k <= neighbours[0]; ++k) {
    int const c = neighbours[k];
    RBFnode const& member = m_pRBFnode[c];
    stencil[k + 1] = c;
    box.Widen(member.x, member.y, member.z);
    largest2 = std::max(largest2, SquaredLength(OffsetBetween(centre, member)));
  }
  m_pSupportLength[i] = std::sqrt(largest2);
  m_pStencilExtent[i].Set(std::fabs(box.xmax - box.xmin), std::fabs(box.ymax - box.ymin),
                          std::fabs(box.zmax - box.zmin), i);
}
