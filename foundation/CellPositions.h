#pragma once

#include "foundation/BoundingBox.h"
#include "foundation/DQVector.h"
#include "host/Zyn3dGV.h"

/// @file
/// Where the operators for free points put the cells of a mesh, and how large the mesh is for them.

/// Kinds of cell numbers, as they stand in the operators' tables; 0 is none of these.
enum class CellKind : int { Interior = 1, Wall = 2, Inlet = 3, Outlet = 4, Partition = 5 };

struct MeshExtent {
  BoundingBox box;
  double meanDistance;  ///< between the two cells of an inner face, L; not a number without inner faces
};

/// Bounds of the cells beside inner faces and of the wall and inlet face centres. Outlets, symmetry planes and
/// halo cells are left out on purpose: the box may be narrower than what is put into a tree with this range.
inline MeshExtent MeasureExtent(CZYN3DFiniteVolumeMesh const& mesh) {
  BoundingBox box;
  double distanceSum = 0.0;
  for (int f = 1; f <= mesh.NInnerFaces; ++f) {
    int const a = mesh.ijCV[f], b = mesh.ij[f];
    DQVector const first = {mesh.xc[a], mesh.yc[a], mesh.zc[a]};
    DQVector const second = {mesh.xc[b], mesh.yc[b], mesh.zc[b]};
    box.Widen(first.x, first.y, first.z);
    box.Widen(second.x, second.y, second.z);
    distanceSum += Length(OffsetBetween(first, second));
  }
  for (int f = 1; f <= mesh.NWall; ++f) box.Widen(mesh.ijWallxc[f], mesh.ijWallyc[f], mesh.ijWallzc[f]);
  for (int f = 1; f <= mesh.NInlet; ++f) box.Widen(mesh.ijInletxc[f], mesh.ijInletyc[f], mesh.ijInletzc[f]);
  return {box, distanceSum / mesh.NInnerFaces};
}

/// Calls place(c, x, y, z, kind) for interior and halo cells with their centres and for the ghost cells of
/// walls, inlets and outlets with their face centres, in the order of the kinds. A cell number in several groups
/// comes several times. The ghost cells of symmetry faces are left out on purpose.
template <typename Place>
void PlaceCells(CZYN3DFiniteVolumeMesh const& mesh, CPartitionFace_DLL& partition, Place place) {
  auto const placeGhosts = [&](int count, int const* cells, double const* x, double const* y, double const* z,
                               CellKind kind) {
    for (int f = 1; f <= count; ++f) place(cells[f], x[f], y[f], z[f], kind);
  };
  for (int c = 1; c <= mesh.NInnerCells; ++c)
    place(c, mesh.xc[c], mesh.yc[c], mesh.zc[c], CellKind::Interior);
  placeGhosts(mesh.NWall, mesh.ijWall, mesh.ijWallxc, mesh.ijWallyc, mesh.ijWallzc, CellKind::Wall);
  placeGhosts(mesh.NInlet, mesh.ijInlet, mesh.ijInletxc, mesh.ijInletyc, mesh.ijInletzc, CellKind::Inlet);
  placeGhosts(mesh.NOutlet, mesh.ijOutlet, mesh.ijOutletxc, mesh.ijOutletyc, mesh.ijOutletzc,
              CellKind::Outlet);
  int const nParInterFace = partition.NParInterFace();
  int const* const halo = partition.ijPar();
  for (int p = 1; p <= nParInterFace; ++p) {
    int const c = halo[p];
    place(c, mesh.xc[c], mesh.yc[c], mesh.zc[c], CellKind::Partition);
  }
}
