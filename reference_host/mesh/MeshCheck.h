#pragma once

#include <string>

#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Throws MeshError for a mesh that the operators cannot use, with the reason and the first node, face or
/// cell in question: by its name in the file (FaceMesh::names), or else by its number in the mesh, counted
/// from 1.
///
/// Rejects, in this order: a mesh without cells; coordinates that are not finite; faces with fewer than 3
/// nodes or with a node twice; node, cell and patch numbers out of range; faces that join a cell to itself;
/// cells with fewer than 4 faces; faces without area; cells that are not closed; cells whose volume is
/// negative or zero.
/// @param[in] meshName  what the message begins with, such as the file; may be empty
void CheckMesh(FaceMesh const& mesh, std::string const& meshName = {});

/// The first face without area; -1: none.
int FirstFaceWithoutArea(FaceTable const& faces);

/// A cell that fails the check of its geometry, and how.
struct BadCell {
  int cell = -1;  ///< -1: none
  std::string complaint;
};

/// The first of the cells 0..nCells-1 that is not closed or has no positive volume.
BadCell FirstBadCell(FaceTable const& faces, int nCells);

}  // namespace reference_host
