#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "foundation/FaceGroups.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/partition/HostPartition.h"

namespace reference_host {

/// The order in which the groups get their ghost cells, the same as that of BoundaryGroup.
constexpr std::array<FaceKind, 4> kGhostOrder = {FaceKind::Inlet, FaceKind::Outlet, FaceKind::Symmetry,
                                                 FaceKind::Wall};

constexpr FaceKind KindOf(BoundaryGroup group) { return kGhostOrder[static_cast<std::size_t>(group)]; }
static_assert(KindOf(BoundaryGroup::Inlet) == FaceKind::Inlet &&
              KindOf(BoundaryGroup::Outlet) == FaceKind::Outlet &&
              KindOf(BoundaryGroup::Symmetry) == FaceKind::Symmetry &&
              KindOf(BoundaryGroup::Wall) == FaceKind::Wall);

/// The numbers of a MeshPart's cells and faces in the operators' tables. The "part number" is the 0-based
/// number in the MeshPart, the "host number" the 1-based one in the tables. Exists only while the tables are
/// built.
struct HostNumbering {
  int nInterior = 0, nGhost = 0, nHalo = 0;
  int nCells() const { return nInterior + nGhost + nHalo; }

  std::vector<int> cell;      ///< [part cell] its host number
  std::vector<int> partCell;  ///< [1..nInterior] part number of an interior cell

  /// Faces of the owned part cell c, ascending: cellFace[cellFaceStart[c] .. cellFaceStart[c+1]-1].
  std::vector<std::size_t> cellFaceStart;
  std::vector<int> cellFace;

  std::vector<FaceKind> kind;  ///< [part face]
  std::vector<int> face;       ///< [part face] host number within its group

  /// [IndexOf(kind)][1..n] part number of a face. Inner faces ascend by (ijCV, ij), partition faces by
  /// (ijParCV, ijPar), boundary faces by their cell; ties by part number.
  std::array<std::vector<int>, kFaceKinds> partFace;
  /// the ghost cell of face f of a kind is ghostsBefore[kind] + f
  std::array<int, kFaceKinds> ghostsBefore{};

  int nFaces(FaceKind k) const { return static_cast<int>(PartFaces(k).size()) - 1; }
  std::vector<int> const& PartFaces(FaceKind k) const { return partFace[IndexOf(k)]; }
  int GhostCell(FaceKind k, int f) const { return ghostsBefore[IndexOf(k)] + f; }
};

/// @throws MeshError  a boundary face without patch or group, or more cells or faces than an int can count
HostNumbering NumberPartition(MeshPart const& part);

/// The cells to send and to receive, in host numbers, ascending by neighbour part, which is this one for cells
/// beyond a period of it. Cells ascend by their numbers in the whole mesh and periods, which both sides know.
std::vector<ExchangeList> BuildExchangeLists(MeshPart const& part, HostNumbering const& numbering);

}  // namespace reference_host
