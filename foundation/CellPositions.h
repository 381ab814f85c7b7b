#pragma once

#include <array>

#include "foundation/BoundingBox.h"
#include "foundation/DQVector.h"
#include "foundation/FaceGroups.h"
#include "host/Zyn3dGV.h"

/// @file
/// How large a mesh is for the radial-basis operators, and at which points its cell numbers stand.

struct MeshExtent {
  BoundingBox box;      ///< L
  double meanDistance;  ///< between the two cells of an inner face, L; not a number without inner faces
};

/// Bounds of the cells beside inner faces, and their mean distance. An operator widens the box by whatever else its
/// search tree is to cover.
inline MeshExtent MeasureInnerFaces(CZYN3DFiniteVolumeMesh const& mesh) {
  FaceGroup const faces = FacesOf(FaceKind::Inner, mesh);
  auto const centreOf = [&mesh](int c) { return DQVector{mesh.xc[c], mesh.yc[c], mesh.zc[c]}; };
  BoundingBox box;
  double distanceSum = 0.0;
  for (int f = 1; f <= faces.count; ++f) {
    DQVector const first = centreOf(faces.cv[f]), second = centreOf(faces.other[f]);
    box.Widen(first.x, first.y, first.z);
    box.Widen(second.x, second.y, second.z);
    distanceSum += Length(OffsetBetween(first, second));
  }
  return {box, distanceSum / faces.count};
}

/// Widens a box by the centres of the faces of a boundary group.
inline void WidenByFaceCentres(FaceKind kind, CZYN3DFiniteVolumeMesh const& mesh, BoundingBox& box) {
  FaceGroup const faces = FacesOf(kind, mesh);
  for (int f = 1; f <= faces.count; ++f) box.Widen(faces.xc[f], faces.yc[f], faces.zc[f]);
}

/// The range of the search tree for free points: the cells beside inner faces, and the centres of wall and inlet
/// faces.
/// @note Outlets, symmetry planes and halo cells do not widen the box, so entries may lie outside the range. A host's
/// tree must accept such entries; a wider box would give it another range and so another order of its answers.
inline MeshExtent MeasureExtent(CZYN3DFiniteVolumeMesh const& mesh) {
  MeshExtent extent = MeasureInnerFaces(mesh);
  WidenByFaceCentres(FaceKind::Wall, mesh, extent.box);
  WidenByFaceCentres(FaceKind::Inlet, mesh, extent.box);
  return extent;
}

/// The kinds of cell numbers that have a point, in the order in which they get it: a cell number in several groups
/// ends with the last. The ghost cells of symmetry faces have none and stay at the origin with kind 0: the weights of
/// the cells beside them depend on it.
constexpr std::array<FaceKind, 5> kPlacedKinds = {FaceKind::Inner, FaceKind::Wall, FaceKind::Inlet,
                                                  FaceKind::Outlet, FaceKind::Partition};

/// Calls place(c, x, y, z, kind) for the cell numbers of one kind in the order of the cells or faces: interior (kind
/// Inner) and halo cells with their centres, ghost cells with their face centres. L.
template <typename Place>
void PlaceCells(FaceKind kind, CZYN3DFiniteVolumeMesh const& mesh, CPartitionFace_DLL& partition,
                Place place) {
  auto const placeAtCentre = [&](int c) { place(c, mesh.xc[c], mesh.yc[c], mesh.zc[c], kind); };
  if (kind == FaceKind::Inner) {
    for (int c = 1; c <= mesh.NInnerCells; ++c) placeAtCentre(c);
  } else if (kind == FaceKind::Partition) {
    FaceGroup const faces = PartitionFaceCells(partition);
    for (int f = 1; f <= faces.count; ++f) placeAtCentre(faces.other[f]);
  } else {
    FaceGroup const faces = FacesOf(kind, mesh);
    for (int f = 1; f <= faces.count; ++f) place(faces.other[f], faces.xc[f], faces.yc[f], faces.zc[f], kind);
  }
}

/// The same for all cell numbers that have a point.
template <typename Place>
void PlaceCells(CZYN3DFiniteVolumeMesh const& mesh, CPartitionFace_DLL& partition, Place place) {
  for (FaceKind const kind : kPlacedKinds) PlaceCells(kind, mesh, partition, place);
}
