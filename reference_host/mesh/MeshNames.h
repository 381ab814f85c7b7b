#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// How a mesh file calls what a FaceMesh numbers from 0, for messages: a user must find the place in the file. Readers
/// that drop or reorder anything leave this in FaceMesh::names.
struct MeshNames {
  std::string nodeWord = "node";
  std::function<std::int64_t(int)> nodeNumber;
  std::function<std::string(int)> cell;  ///< "element 12"
  std::function<std::string(int)> face;  ///< "face 7"; empty if the file does not number faces
};

/// "node 27". A mesh without names counts from 1.
std::string NameOfNode(FaceMesh const& mesh, int node);

/// "element 12"; without names "cell 12".
std::string NameOfCell(FaceMesh const& mesh, int cell);

/// "face 7", or "the face of nodes 3, 5 and 9 of element 12" where the file does not number faces.
std::string NameOfFace(FaceMesh const& mesh, int face);

/// The names of a polyMesh, which counts points, faces and cells from 0.
std::shared_ptr<const MeshNames> PolyMeshNames();

}  // namespace reference_host
