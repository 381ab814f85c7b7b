#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "reference_host/mesh/MeshPart.h"
#include "reference_host/partition/HostNumbering.h"
#include "reference_host/partition/RaggedTable.h"

namespace reference_host {

/// The arrays of one face group, [1..n], which a FaceGroup lends.
struct OwnedFaceGroup {
  std::vector<int> cv, other;      ///< the two cells; area vectors point from cv to other
  std::vector<double> sx, sy, sz;  ///< area vector, L^2
  std::vector<double> xc, yc, zc;  ///< centre, L
  std::vector<double> weight;      ///< weight of other; inner and partition faces only
  std::vector<int> type;           ///< 0 throughout: both sides take the flux; inner and partition faces only
  RaggedTable nodes;  ///< rows around the area vector; the first three nodes span the face's plane

  int size() const { return cv.empty() ? 0 : static_cast<int>(cv.size()) - 1; }
};

/// All arrays that the lent records of a HostPartition point to, with the names of the records.
struct HostTables {
  int nInterior = 0, nGhost = 0, nHalo = 0;
  int nCells() const { return nInterior + nGhost + nHalo; }

  std::array<OwnedFaceGroup, kFaceKinds> groups;  ///< by IndexOf(kind)
  OwnedFaceGroup& Group(FaceKind kind) { return groups[IndexOf(kind)]; }

  std::vector<double> xn, yn, zn;  ///< [1..NNode]
  std::vector<double> xc, yc, zc;  ///< [1..NCell]
  std::vector<double> volume;      ///< [1..NInnerCells]

  RaggedTable cellCell, cellFace, cellFaceType;  ///< rows 1..NInnerCells
  RaggedTable cellNodes;                         ///< rows 1..NCell
  std::vector<int> cellNodeNumber;               ///< [1..NCell]
  RaggedTable nodeCell;                          ///< rows 1..NNode

  std::vector<std::int64_t> globalCell;  ///< [1..NCell]
  std::vector<std::int64_t> globalNode;  ///< [1..NNode]
  std::vector<int> patchOfGhost;         ///< [1..NCell]

  std::vector<int> haloPeriod;  ///< [halo cell - first halo cell] as in the MeshPart
  std::vector<Point> shifts;    ///< as in the MeshPart
  /// [halo cell - first halo cell] centre of the owner; empty in a mesh without periods
  std::vector<Point> ownerCentre;
};

/// Fills the cells of all faces, and the numbers of cells and patches in the mesh file.
void FillFaceCells(MeshPart const& part, HostNumbering const& numbering, HostTables& tables);

/// Fills areas, centres and volumes. Halo centres stay zero. @pre FillFaceCells
void FillGeometry(MeshPart const& part, HostNumbering const& numbering, HostTables& tables);

/// Weight of the `other` side of each face of the group: S.(xf - xCV) / (S.(xf - xCV) + S.(xOther - xf)), the
/// position of the face between the centres along its normal. 0.5 if the centres do not differ along it.
void FillWeights(HostTables const& tables, OwnedFaceGroup& group);

/// Numbers the nodes by their first use in the faces, and fills all tables of cells, faces and nodes.
/// @pre FillGeometry
void FillTopology(MeshPart const& part, HostNumbering const& numbering, HostTables& tables);

}  // namespace reference_host
