// Virtual nodes of method 4: where P and E lie, and the cells around them.

#include <algorithm>
#include <array>
#include <cstddef>

#include "foundation/DQVector.h"
#include "foundation/Status.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"

namespace {

// The foot of the perpendicular from `from` onto the line through `origin` along s.
DQVector Foot(DQVector const& from, DQVector const& origin, DQVector const& s) {
  double const t = Dot(OffsetBetween(origin, from), s) / Dot(s, s);
  return {origin.x + t * s.x, origin.y + t * s.y, origin.z + t * s.z};
}

}  // namespace

void CZynFaceRBFInternalObject::Search_by_normal_virtual_node() { ForEachFaceByVirtualNodes(nullptr); }

void CZynFaceRBFInternalObject::ForEachFaceByVirtualNodes(DeriveFace derive) {
  FaceGroup const faces = OwnFaces();
  int const nFace = std::min(NFace, faces.count);
  for (int i = 1; i <= nFace; ++i) {
    int pair[2] = {faces.cv[i], faces.other[i]};
    Set_VirtualNode_Coord_and_ClosestCellID(iFaceType, i, pair, faces.sx[i], faces.sy[i], faces.sz[i]);
    CountingVirtualNodeToCellconnectionNumber_By33(i, pair);
    if (derive == nullptr) continue;
    (this->*derive)(i);
    ForgetPositionRows(i);
  }
}

int CZynFaceRBFInternalObject::Set_VirtualNode_Coord_and_ClosestCellID(int faceType, int i, int* pair,
                                                                       double Sx, double Sy, double Sz) {
  DQVector const s = {Sx, Sy, Sz};
  DQVector const at = Target(i);
  DQVector const p = Foot(PointOf(pair[0]), at, s);
  DQVector e = PointOf(pair[1]);
  int cellOfE = pair[1];
  if (!IsBoundary(static_cast<FaceKind>(faceType))) {
    e = Foot(e, at, s);
    cellOfE = Search_ClosestCellID_byNode(e.x, e.y, e.z);
  }
  int const cellOfP = Search_ClosestCellID_byNode(p.x, p.y, p.z);
  m_ppVirtualNode[i][kP].SetData(p.x, p.y, p.z, cellOfP);
  m_ppVirtualNode[i][kE].SetData(e.x, e.y, e.z, cellOfE);
  return Status::kDone;
}

int CZynFaceRBFInternalObject::CountingVirtualNodeToCellconnectionNumber_By33(int i, int* pair) {
  Work& work = work_.Get();
  StartSides(pair);
  AppendOnce(pair[0], work.sideP, m_pMarkP);
  AppendOnce(pair[1], work.sideE, m_pMarkE);
  CollectNeighbours(m_ppVirtualNode[i][kP].tag, work.sideP, m_pMarkP);
  CollectNeighbours(m_ppVirtualNode[i][kE].tag, work.sideE, m_pMarkE);

  // From here on, marks are positions among the cells that stay; a dropped twin has position 0. The sides are parts
  // of the merged list: if that has no twins, neither have they.
  if (DropTwins(work.merged, m_pMarkAll)) {
    DropTwins(work.sideP, m_pMarkP);
    DropTwins(work.sideE, m_pMarkE);
  }

  StoreSides(i);
  int const n = StoreStencil(i);
  MakeValueRows(i, n);
  if (iSearch_method != 4) MakeMissingTables();
  MakeGradientRow(i, n);
  ClearMarks(work.merged, m_pMarkAll);
  ClearMarks(work.sideP, m_pMarkP);
  ClearMarks(work.sideE, m_pMarkE);
  return n;
}

// The merged list with the pair; nothing on the sides.
void CZynFaceRBFInternalObject::StartSides(int const* pair) {
  Work& work = work_.Get();
  StartMerged(pair);
  work.sideP.assign(1, 0);
  work.sideE.assign(1, 0);
}

void CZynFaceRBFInternalObject::AppendToSide(int c, std::vector<int>& side, int* marks) {
  AppendOnce(c, work_.Get().merged, m_pMarkAll);
  AppendOnce(c, side, marks);
}

// The cell tied to a virtual node and its neighbours. Cell 0, which stands for none, has no neighbours.
void CZynFaceRBFInternalObject::CollectNeighbours(int c, std::vector<int>& side, int* marks) {
  std::vector<int>& merged = work_.Get().merged;
  auto const append = [&](int d) {
    AppendOnce(d, merged, m_pMarkAll);
    AppendOnce(d, side, marks);
  };
  append(c);
  int const* const row = m_ppRBFCell33Conn[c];
  if (row == nullptr) return;
  for (int k = 1; k <= row[0]; ++k) append(row[k]);
}

// @return whether there were any
bool CZynFaceRBFInternalObject::DropTwins(std::vector<int>& list, int* marks) {
  int const n = static_cast<int>(list.size()) - 1;
  int const nKept = Delete_Duplicate_Coordinate(n, list, marks);
  list.resize(static_cast<std::size_t>(nKept) + 1);
  return nKept < n;
}

// Rows 1 and 2 of the face: the stencils of P and E as positions in the merged list.
void CZynFaceRBFInternalObject::StoreSides(int i) {
  Work& work = work_.Get();
  std::array<std::vector<int> const*, kE + 1> const sides = {nullptr, &work.sideP, &work.sideE};
  auto const sizeOf = [&sides](int k) {
    return static_cast<int>(sides[static_cast<std::size_t>(k)]->size()) - 1;
  };
  int* const* const rows = MakePositionRows(i, kE, sizeOf);
  for (int const k : {kP, kE}) {
    int const* const side = sides[static_cast<std::size_t>(k)]->data();
    int* const positions = rows[k];
    for (int j = 1; j <= positions[0]; ++j) positions[j] = m_pMarkAll[side[j]];
  }
}
