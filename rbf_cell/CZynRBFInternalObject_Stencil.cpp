// Where the cell numbers stand, and the stencils of the interior cells.

#include <algorithm>
#include <cmath>

#include "foundation/BoundingBox.h"
#include "foundation/DQVector.h"
#include "foundation/Progress.h"
#include "foundation/WithoutTraps.h"
#include "host/ZYNOptKer.h"
#include "host/Zyn3dGV.h"
#include "rbf_cell/CZynRBFInternalObject.h"

namespace {

constexpr int kSuccess = 1;

enum NodeKind : int { kInterior = 1, kWall = 2, kInlet = 3, kOutlet = 4, kPartition = 5 };

constexpr double kBoxHalfWidth = 1e-6;  // L; a point as a box of the tree

DQVector CellCentre(CZYN3DFiniteVolumeMesh const& mesh, int c) {
  return {mesh.xc[c], mesh.yc[c], mesh.zc[c]};
}

}  // namespace

int CZynRBFInternalObject::SetNodeCollation() {
  WithoutTraps const duringSetUp;
  MeasureBounds();
  m_pADTree->SetADTreeRange(m_dBoundMax[0], m_dBoundMax[1], m_dBoundMax[2], m_dBoundMin[0], m_dBoundMin[1],
                            m_dBoundMin[2], 1, 10000, 200000);
  PrintFlushed("NInlet ok!\n");
  CollateAll();
  return kSuccess;
}

// Cells beside inner faces, walls and inlets make the tree's range. Outlets and partition cells are left out
// on purpose: the range may be narrower than what is entered.
void CZynRBFInternalObject::MeasureBounds() {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  BoundingBox box;
  double distanceSum = 0.0;
  for (int f = 1; f <= mesh.NInnerFaces; ++f) {
    DQVector const first = CellCentre(mesh, mesh.ijCV[f]);
    DQVector const second = CellCentre(mesh, mesh.ij[f]);
    box.Widen(first.x, first.y, first.z);
    box.Widen(second.x, second.y, second.z);
    distanceSum += Length(OffsetBetween(first, second));
  }
  m_dMeanCellDistance = distanceSum / mesh.NInnerFaces;
  PrintFlushed("NInnerFaces ok!\n");

  for (int w = 1; w <= mesh.NWall; ++w) box.Widen(mesh.ijWallxc[w], mesh.ijWallyc[w], mesh.ijWallzc[w]);
  PrintFlushed("NWall ok!\n");
  for (int f = 1; f <= mesh.NInlet; ++f) box.Widen(mesh.ijInletxc[f], mesh.ijInletyc[f], mesh.ijInletzc[f]);

  m_dBoundMax[0] = box.xmax, m_dBoundMax[1] = box.ymax, m_dBoundMax[2] = box.zmax;
  m_dBoundMin[0] = box.xmin, m_dBoundMin[1] = box.ymin, m_dBoundMin[2] = box.zmin;
}

// Symmetry faces are left out on purpose: their ghost cells stay at the origin with kind 0.
void CZynRBFInternalObject::CollateAll() {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  for (int c = 1; c <= mesh.NInnerCells; ++c) Collate(c, mesh.xc[c], mesh.yc[c], mesh.zc[c], kInterior, c);
  PrintFlushed("NInnerCells ok!\n");
  for (int w = 1; w <= mesh.NWall; ++w)
    Collate(mesh.ijWall[w], mesh.ijWallxc[w], mesh.ijWallyc[w], mesh.ijWallzc[w], kWall, w);
  PrintFlushed("NWall ok!\n");
  for (int f = 1; f <= mesh.NInlet; ++f)
    Collate(mesh.ijInlet[f], mesh.ijInletxc[f], mesh.ijInletyc[f], mesh.ijInletzc[f], kInlet, f);
  PrintFlushed("NInlet ok!\n");
  for (int f = 1; f <= mesh.NOutlet; ++f)
    Collate(mesh.ijOutlet[f], mesh.ijOutletxc[f], mesh.ijOutletyc[f], mesh.ijOutletzc[f], kOutlet, f);
  PrintFlushed("NOutlet ok!\n");
  int const nParInterFace = m_pPartFace->NParInterFace();
  int const* const halo = m_pPartFace->ijPar();
  for (int p = 1; p <= nParInterFace; ++p) {
    int const c = halo[p];
    Collate(c, mesh.xc[c], mesh.yc[c], mesh.zc[c], kPartition, p);
  }
  PrintFlushed("pPartFace ok!\n");
}

void CZynRBFInternalObject::Collate(int c, double x, double y, double z, int kind, int index) {
  constexpr double d = kBoxHalfWidth;
  m_pADTree->AddSurfaceToADTree(c, x + d, y + d, z + d, x - d, y - d, z - d);
  m_pRBFnode[c].Set(x, y, z, c);
  m_piNodeKind[c] = kind;
  m_piNodeKindIndex[c] = index;
}

int CZynRBFInternalObject::SetCellToCellconnection() {
  WithoutTraps const duringSetUp;
  int const nInnerCells = m_pMesh->NInnerCells;
  for (int i = 1; i <= nInnerCells; ++i) CollectStencil(i);
  return kSuccess;
}

// The cell, then its neighbours as the mesh lists them: nothing is sorted, dropped or measured against a
// distance.
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
