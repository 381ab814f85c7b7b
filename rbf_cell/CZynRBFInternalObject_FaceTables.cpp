// The tables of the face-flux family: how many cells are around a face, and rows of that size. Nothing in the library
// calls it.

#include <algorithm>
#include <cstddef>
#include <vector>

#include "foundation/FaceGroups.h"
#include "foundation/RowTable.h"
#include "foundation/Status.h"
#include "host/Zyn3dGV.h"
#include "rbf_cell/CZynRBFInternalObject.h"

namespace {

enum TableMode : int { kTwoNodes = 0, kAllNodes = 1 };

constexpr int kTwoNodeStencil = 2;
constexpr int kTwoNodeRow = 4;  // elements 1 to 3 are written: two weights and a multiplier

// The family has no symmetry faces.
bool IsOfTheFamily(int kind) { return IsFaceType(kind) && static_cast<FaceKind>(kind) != FaceKind::Symmetry; }

/// Number of distinct cells around a face; `seen` is work storage. The table of nodes may end with the partition
/// faces.
int CountCellsAround(CZYN3DFiniteVolumeMesh const& mesh, int nParInterFace, int face, int kind,
                     std::vector<int>& seen) {
  int* const* const faceNodes = mesh.*MembersOf(FaceKind::Partition).nodes;  // for every kind, see the header
  if (!IsOfTheFamily(kind) || faceNodes == nullptr) return 0;
  if (face < 1 || face > nParInterFace) return 0;
  int const* const nodes = faceNodes[face];
  seen.clear();
  for (int i = 1; i <= nodes[0]; ++i) {
    // The length of the row of node nodes[i], and the cells of row i: see the header.
    int const* const row = mesh.NodeCell[i];
    int const m = std::min(mesh.NodeCell[nodes[i]][0], row[0]);
    if (m > 0) seen.insert(seen.end(), row + 1, row + 1 + m);
  }
  std::sort(seen.begin(), seen.end());
  return static_cast<int>(std::unique(seen.begin(), seen.end()) - seen.begin());
}

/// Stencil sizes [1..nFace] that a mode gives the faces of a kind; empty if it gives them no rows.
std::vector<int> StencilSizes(CZYN3DFiniteVolumeMesh const& mesh, int nParInterFace, int mode, FaceKind kind,
                              int nFace) {
  if (mode != kTwoNodes && mode != kAllNodes) return {};
  std::vector<int> sizes(static_cast<std::size_t>(nFace) + 1, kTwoNodeStencil);
  if (mode == kTwoNodes) return sizes;
  std::vector<int> seen;
  for (int f = 1; f <= nFace; ++f)
    sizes[f] = CountCellsAround(mesh, nParInterFace, f, static_cast<int>(kind), seen);
  return sizes;
}

int** NewStencilTable(int nFace, std::vector<int> const& sizes) {
  int const nFilled = sizes.empty() ? 0 : nFace;
  int** const table = RowTable<int>::Create(nFace, nFilled, [&](int f) { return sizes[f] + 1; });
  for (int f = 1; f <= nFilled; ++f) table[f][0] = sizes[f];
  return table;
}

// A row has two elements more than the stencil, and room for the weights of two nodes in any case: these are written
// whatever was counted.
template <typename T>
T** NewWeightTable(int nFace, std::vector<int> const& sizes) {
  int const nFilled = sizes.empty() ? 0 : nFace;
  return RowTable<T>::Create(nFace, nFilled, [&](int f) { return std::max(sizes[f] + 2, kTwoNodeRow); });
}

}  // namespace

int CZynRBFInternalObject::faceToCellconnection_memoryallocate(int mode) {
  CZYN3DFiniteVolumeMesh const& mesh = *m_pMesh;
  int const nParInterFace = m_pPartFace->NParInterFace();
  auto const countOf = [&](FaceKind kind) {
    return kind == FaceKind::Partition ? nParInterFace : FacesOf(kind, mesh).count;
  };
  auto const allocate = [&](FaceKind kind, int**& stencils, RBFnode**& weights) {
    int const nFace = countOf(kind);
    std::vector<int> const sizes = StencilSizes(mesh, nParInterFace, mode, kind, nFace);
    stencils = NewStencilTable(nFace, sizes);
    weights = NewWeightTable<RBFnode>(nFace, sizes);
    if (kind == FaceKind::Inner) m_ppRBFInnerFaceFlux = NewWeightTable<double>(nFace, sizes);
  };

  allocate(FaceKind::Inner, m_ppRBFInnerFaceConn, m_ppRBFInnerFaceCoef);
  allocate(FaceKind::Wall, m_ppRBFWallFaceConn, m_ppRBFWallFaceCoef);
  allocate(FaceKind::Inlet, m_ppRBFInletFaceConn, m_ppRBFInletFaceCoef);
  allocate(FaceKind::Outlet, m_ppRBFOutletFaceConn, m_ppRBFOutletFaceCoef);
  allocate(FaceKind::Partition, m_ppRBFPartInterFaceConn, m_ppRBFPartInterFaceCoef);
  return Status::kDone;
}

int CZynRBFInternalObject::CountingfaceToCellconnectionNumber(int face, int kind) {
  std::vector<int> seen;
  // Without partition faces the caller guarantees that there is a row.
  int const nParInterFace = m_pPartFace != nullptr ? m_pPartFace->NParInterFace() : face;
  return CountCellsAround(*m_pMesh, nParInterFace, face, kind, seen);
}

int CZynRBFInternalObject::SetfaceToCellconnection(int) { return Status::kDone; }
