// What touches what: cells around vertices, vertices, neighbours and faces of cells.

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "foundation/NodeCellRows.h"
#include "foundation/RowTable.h"
#include "foundation/Status.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"

namespace {

constexpr int kVerticesOfAnEdge = 2;

// The faces of all kinds, by IndexOf(kind).
using AllFaces = std::array<FaceGroup, kFaceKinds>;

AllFaces FacesOfAllKinds(CZYN3DFiniteVolumeMesh const& mesh, CPartitionFace_DLL* partitionFaces) {
  AllFaces faces;
  for (FaceGroupMembers const& group : face_groups::kTable)
    faces[IndexOf(group.kind)] = FacesWithPoints(group.kind, mesh, partitionFaces);
  return faces;
}

// Calls action(faces, f) for every face with a ghost or halo cell.
template <typename Action>
void ForEachFaceWithOwnCell(AllFaces const& allFaces, Action action) {
  for (FaceKind const kind : face_groups::kFacesWithOwnCell) {
    FaceGroup const& faces = allFaces[IndexOf(kind)];
    for (int f = 1; f <= faces.count; ++f) action(faces, f);
  }
}

// The face type that the operator's tables have for a code of the mesh; 0 for an unknown code.
int FaceTypeWithCode(int code) {
  FaceGroupMembers const* const group = GroupWithCode(code);
  return group == nullptr ? 0 : static_cast<int>(group->kind);
}

void CopyRow(int const* from, int* to) { std::copy(from, from + from[0] + 1, to); }

/// The ghost and halo cells that share an edge, exactly two vertices, with a ghost cell.
class EdgeNeighbours {
 public:
  explicit EdgeNeighbours(CZynFaceRBFInternalObject const& object)
      : object_(object), tally_(static_cast<std::size_t>(object.pMesh->NCell) + 1, 0) {}

  /// Those of a ghost cell, in the order in which its vertices meet them; a halo cell has none.
  std::vector<int> const& Of(int c) {
    Meet(c);
    neighbours_.clear();
    for (int const d : met_) {
      int& tally = tally_[static_cast<std::size_t>(d)];
      if (tally == kVerticesOfAnEdge) neighbours_.push_back(d);
      tally = 0;
    }
    return neighbours_;
  }

 private:
  // All ghost and halo cells around the vertices of c, as often as a vertex has them.
  void Meet(int c) {
    met_.clear();
    if (object_.m_pCellType[c] == static_cast<int>(FaceKind::Partition)) return;
    int const nInnerCells = object_.pMesh->NInnerCells;
    int const* const vertices = object_.m_ppRBFlnods[c];
    for (int k = 1; k <= vertices[0]; ++k) {
      int const* const around = object_.ppRBFiNodeConn[vertices[k]];
      for (int m = 1; m <= around[0]; ++m) {
        int const d = around[m];
        if (d <= nInnerCells || d == c) continue;
        ++tally_[static_cast<std::size_t>(d)];
        met_.push_back(d);
      }
    }
  }

  CZynFaceRBFInternalObject const& object_;
  std::vector<int> tally_;  // by cell; all zero between cells
  std::vector<int> met_, neighbours_;
};

// The cells across the faces, in the order of the faces.
void FillNeighboursOfInteriorCells(CZYN3DFiniteVolumeMesh const& mesh, AllFaces const& allFaces, int** rows) {
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    int* const row = rows[c];
    int n = 0;
    for (int k = 1; k <= row[0]; ++k) {
      FaceGroupMembers const* const group = GroupWithCode(mesh.CellFaceType[c][k]);
      if (group == nullptr) continue;
      FaceGroup const& faces = allFaces[IndexOf(group->kind)];
      int const f = mesh.CellFace[c][k];
      if (f < 1 || f > faces.count) continue;
      for (int const d : {faces.cv[f], faces.other[f]})
        if (d != c && n < row[0]) row[++n] = d;
    }
  }
}

// The owner, then the neighbours across edges. A halo cell has its owner alone.
void FillNeighboursOfGhostCells(CZYN3DFiniteVolumeMesh const& mesh, AllFaces const& allFaces,
                                EdgeNeighbours& edgeNeighbours, int** rows) {
  ForEachFaceWithOwnCell(allFaces,
                         [rows](FaceGroup const& faces, int f) { rows[faces.other[f]][1] = faces.cv[f]; });
  for (int c = mesh.NInnerCells + 1; c <= mesh.NCell; ++c) {
    std::vector<int> const& neighbours = edgeNeighbours.Of(c);
    std::copy(neighbours.begin(), neighbours.end(), rows[c] + 2);
  }
}

}  // namespace

int CZynFaceRBFInternalObject::Create_ppRBFiNodeConn() {
  RowTable<int>::Destroy(ppRBFiNodeConn);
  bool const* const isBoundary = m_BoundaryNode.Get_Ptr();
  ppRBFiNodeConn = CreateNodeCellRows(
      *pMesh, [isBoundary](int v) { return isBoundary[v]; }, [](int) { return true; });
  return Status::kDone;
}

int CZynFaceRBFInternalObject::Create_m_ppRBFlnods() {
  CZYN3DFiniteVolumeMesh const& mesh = *pMesh;
  RowTable<int>::Destroy(m_ppRBFlnods);
  m_ppRBFlnods = RowTable<int>::Create(mesh.NCell, mesh.NCell, [this](int) { return MaxLnods + 1; });
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    int const n = mesh.CellLnodsNumber[c];
    m_ppRBFlnods[c][0] = n;
    std::copy_n(mesh.CellLnods[c] + 1, n, m_ppRBFlnods[c] + 1);
  }
  // A halo cell of several faces ends with the vertices of the last one.
  ForEachFaceWithOwnCell(FacesOfAllKinds(mesh, pPartFace), [this](FaceGroup const& faces, int f) {
    CopyRow(faces.nodes[f], m_ppRBFlnods[faces.other[f]]);
  });
  return Status::kDone;
}

int CZynFaceRBFInternalObject::Create_m_ppRBFCell33Conn() {
  CZYN3DFiniteVolumeMesh const& mesh = *pMesh;
  RowTable<int>::Destroy(m_ppRBFCell33Conn);
  EdgeNeighbours edgeNeighbours(*this);

  std::vector<int> length(static_cast<std::size_t>(mesh.NCell) + 1, 0);
  for (int c = 1; c <= mesh.NInnerCells; ++c) length[static_cast<std::size_t>(c)] = mesh.CellFace[c][0];
  for (int c = mesh.NInnerCells + 1; c <= mesh.NCell; ++c)
    length[static_cast<std::size_t>(c)] = 1 + static_cast<int>(edgeNeighbours.Of(c).size());

  m_ppRBFCell33Conn = RowTable<int>::Create(
      mesh.NCell, mesh.NCell, [&length](int c) { return length[static_cast<std::size_t>(c)] + 1; });
  for (int c = 1; c <= mesh.NCell; ++c) m_ppRBFCell33Conn[c][0] = length[static_cast<std::size_t>(c)];
  AllFaces const allFaces = FacesOfAllKinds(mesh, pPartFace);
  FillNeighboursOfInteriorCells(mesh, allFaces, m_ppRBFCell33Conn);
  FillNeighboursOfGhostCells(mesh, allFaces, edgeNeighbours, m_ppRBFCell33Conn);
  return Status::kDone;
}

int CZynFaceRBFInternalObject::Create_m_ppRBFCell32Conn() {
  CZYN3DFiniteVolumeMesh const& mesh = *pMesh;
  RowTable<int>::Destroy(m_ppRBFCell32Conn);
  RowTable<int>::Destroy(m_ppRBFCell32Type);
  AllFaces const allFaces = FacesOfAllKinds(mesh, pPartFace);

  std::vector<int> length(static_cast<std::size_t>(mesh.NCell) + 1, 0);
  for (int c = 1; c <= mesh.NInnerCells; ++c) length[static_cast<std::size_t>(c)] = mesh.CellFace[c][0];
  ForEachFaceWithOwnCell(allFaces, [&length](FaceGroup const& faces, int f) {
    ++length[static_cast<std::size_t>(faces.other[f])];
  });
  auto const rowSize = [&length](int c) { return length[static_cast<std::size_t>(c)] + 1; };
  m_ppRBFCell32Conn = RowTable<int>::Create(mesh.NCell, mesh.NCell, rowSize);
  m_ppRBFCell32Type = RowTable<int>::Create(mesh.NCell, mesh.NCell, rowSize);

  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    CopyRow(mesh.CellFace[c], m_ppRBFCell32Conn[c]);
    for (int k = 1; k <= mesh.CellFace[c][0]; ++k)
      m_ppRBFCell32Type[c][k] = FaceTypeWithCode(mesh.CellFaceType[c][k]);
  }
  for (int c = mesh.NInnerCells + 1; c <= mesh.NCell; ++c)
    m_ppRBFCell32Conn[c][0] = length[static_cast<std::size_t>(c)];

  // Only wall faces are entered. The others are counted and stay 0, which the header promises.
  std::vector<int> nEntered(static_cast<std::size_t>(mesh.NCell) + 1, 0);
  FaceGroup const& walls = allFaces[IndexOf(FaceKind::Wall)];
  for (int f = 1; f <= walls.count; ++f) {
    int const c = walls.other[f];
    m_ppRBFCell32Conn[c][++nEntered[static_cast<std::size_t>(c)]] = f;
  }
  return Status::kDone;
}
