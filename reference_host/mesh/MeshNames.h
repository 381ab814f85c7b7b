#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// The names in the mesh file of what a FaceMesh numbers from 0. Messages use them, so that a user finds the
/// place in the file. Readers that drop or reorder anything store this in FaceMesh::names.
struct MeshNames {
  std::string nodeWord = "node";
  std::function<std::int64_t(int)> nodeNumber;
  std::function<std::string(int)> cell;  ///< "element 12"
  std::function<std::string(int)> face;  ///< "face 7"; empty if the file does not number faces
};

/// "node 27"; counted from 1 in a mesh without names.
std::string NameOfNode(FaceMesh const& mesh, int node);

/// "element 12"; "cell 12" in a mesh without names.
std::string NameOfCell(FaceMesh const& mesh, int cell);

/// "face 7", or "the face of nodes 3, 5 and 9 of element 12" if the file does not number faces.
std::string NameOfFace(FaceMesh const& mesh, int face);

/// The names of a polyMesh, which counts points, faces and cells from 0.
std::shared_ptr<const MeshNames> PolyMeshNames();

}  // namespace reference_host
