#pragma once

#include "foundation/FaceGroups.h"

namespace reference_host {

/// Three coordinates of places or vectors, an array each, borrowed.
struct Coordinates {
  double const *x = nullptr, *y = nullptr, *z = nullptr;
};

/// Faces of one group as a solver stores them: arrays from 0, cells counted from 0, all borrowed.
struct ArrayFaces {
  int count = 0;
  int const* owner = nullptr;  ///< [0..count-1] interior cell that the area vector points out of
  Coordinates area;            ///< [0..count-1] L^2
  Coordinates centre;          ///< [0..count-1] L

  /// Face f has the nodes node[nodeStart[f]] .. node[nodeStart[f+1] - 1], in order around it; null if there are no nodes.
  int const* nodeStart = nullptr;
  int const* node = nullptr;
};

/// A partition of a mesh as a solver stores it: faces with an owner and a neighbour.
///
/// Cells are numbered from 0: interior cells, then one ghost cell for each boundary face by group (inlets, outlets,
/// symmetry planes, walls), then the halo cells, then the ghost cells of the empty faces. Fields for the operators are
/// numbered in this way, too.
struct ArrayMesh {
  int nCells = 0;  ///< interior cells
  int nHaloCells = 0;

  /// [0..all cells-1] cell centres; of a ghost cell, the point where the boundary value holds. L
  Coordinates centre;
  double const* volume = nullptr;  ///< [0..nCells-1] L^3

  ArrayFaces inner;
  int const* neighbour = nullptr;  ///< [0..inner.count-1] interior cell on the other side
  double const* neighbourWeight =
      nullptr;  ///< [0..inner.count-1] w in phi_f = (1 - w) phi_owner + w phi_neighbour

  ArrayFaces inlet, outlet, symmetry, wall;

  /// The last faces of `wall` that belong to a mesh of one layer of cells, across which nothing varies. Least squares
  /// needs their ghost cells; Green-Gauss leaves them out.
  int nEmptyFaces = 0;

  ArrayFaces partition;
  int const* haloCell = nullptr;  ///< [0..partition.count-1] 0..nHaloCells-1; null: face i has halo cell i
  double const* haloWeight = nullptr;  ///< [0..partition.count-1] w of the halo cell, like neighbourWeight

  int nNodes = 0;  ///< 0: without nodes, gradients by Green-Gauss and least squares are possible and no more
  Coordinates node;  ///< [0..nNodes-1] L

  /// Halo cell h has the nodes haloNode[haloNodeStart[h]] .. haloNode[haloNodeStart[h+1] - 1], as far as this partition
  /// has them. Null: the nodes of its partition faces.
  int const* haloNodeStart = nullptr;
  int const* haloNode = nullptr;
};

/// The faces of one group.
inline ArrayFaces const& FacesOf(FaceKind kind, ArrayMesh const& arrays) {
  switch (kind) {
    case FaceKind::Inner:
      return arrays.inner;
    case FaceKind::Wall:
      return arrays.wall;
    case FaceKind::Inlet:
      return arrays.inlet;
    case FaceKind::Outlet:
      return arrays.outlet;
    case FaceKind::Partition:
      return arrays.partition;
    case FaceKind::Symmetry:
      break;
  }
  return arrays.symmetry;
}

}  // namespace reference_host
