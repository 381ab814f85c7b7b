#pragma once

#include <functional>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// The dual of a mesh: a polyhedral cell for every node, and a face for every edge, whose nodes are the
/// centres of the cells around the edge.
///
/// At the boundary, a cell is closed by one face for each patch at its node, through the centres of the
/// boundary faces around the node. Where patches meet, the midpoints of their common edges and the node
/// itself are corners, too. So the dual fills the same space as the mesh if the patches are plane.
///
/// Dual cells have the numbers of their nodes. Faces ascend by owner, which is the cell with the lower
/// number, then by neighbour; boundary faces come last, by patch. Faces with more than three nodes are in
/// general not plane.
/// @pre all points are used, the faces of every cell close it, and boundary faces around a node have the same
///   orientation
FaceMesh MakeDual(FaceMesh const& mesh);

/// What a point of a dual is: the centre of cell `a` or of boundary face `a`, the midpoint of the edge between the nodes
/// a < b, or node `a`.
struct DualPoint {
  enum class Kind { Cell, Face, Edge, Node };
  Kind kind;
  int a, b;
};

/// Some faces of a dual.
struct DualPiece {
  /// Cells and patches are those of the whole dual. The faces are in its order. The points are those of the faces and
  /// others, in no particular order.
  FaceMesh mesh;
  std::vector<DualPoint> source;  ///< by point
};

/// The faces of the dual for which isWanted(owner, neighbour) holds; at the boundary, the neighbour is -1.
/// @pre as for MakeDual, but only around the wanted faces: the mesh may end elsewhere, with cells on the other sides of
///   its faces whose own faces it does not have
DualPiece MakeDualPiece(FaceMesh const& mesh, std::function<bool(int, int)> const& isWanted);

}  // namespace reference_host
