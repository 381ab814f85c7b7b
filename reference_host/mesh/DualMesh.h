#pragma once

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// The dual of a mesh, whose cells are polyhedra of many faces: a cell for every node, a face for every edge,
/// whose nodes are the centres of the cells around the edge.
///
/// At the boundary a cell is closed by one face for each patch at its node, made of the centres of the boundary
/// faces around it. Where patches meet, the middles of their common edges and the node itself are corners, too,
/// so that the dual fills the same space as the mesh as far as the patches are plane.
///
/// Dual cells keep the numbers of their nodes; faces ascend by owner, which is the cell with the lower number,
/// and then by neighbour, faces of the boundary last, by patch. Faces with more than three nodes are in general
/// not plane.
/// @pre all points are used, every cell's faces close it, and boundary faces around a node turn alike
FaceMesh MakeDual(FaceMesh const& mesh);

}  // namespace reference_host
