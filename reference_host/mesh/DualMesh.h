#pragma once

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

}  // namespace reference_host
