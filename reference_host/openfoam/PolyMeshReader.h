#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Reads an OpenFOAM mesh: the text files points, faces, owner, neighbour and boundary of a polyMesh folder,
/// cells of any shape. Faces, cells and patches keep their order.
///
/// A patch keeps its type. Types that stand for no boundary of the flow (empty, wedge, cyclic, processor)
/// have no boundary group by themselves: the user maps such a patch by name, or AssignBoundaryGroups refuses
/// the mesh.
///
/// Throws MeshError for binary and compressed files and for damaged ones. The mesh returned still has to pass
/// CheckMesh.
/// @param[in] folder  the polyMesh folder itself
FaceMesh ReadPolyMesh(std::string const& folder);

/// The faces of a patch, and of a patch of type processor the two processors that it lies between.
struct PatchFaces {
  std::int64_t first = 0;  ///< counted from 0 among all faces of the mesh
  std::int64_t count = 0;
  std::int64_t processor = -1;  ///< the one whose folder this is; -1: not told
  std::int64_t neighbour = -1;
};

/// A polyMesh with what a FaceMesh has no place for.
struct PolyMesh {
  FaceMesh mesh;
  std::vector<PatchFaces> facesOfPatch;  ///< by patch
};

/// The same as ReadPolyMesh, and the faces of each patch.
PolyMesh ReadPolyMeshWithPatches(std::string const& folder);

/// The boundary of a polyMesh alone, without points and faces.
struct PolyMeshBoundary {
  std::vector<int> owner;  ///< of every face
  std::vector<Patch> patches;
  std::vector<PatchFaces> facesOfPatch;  ///< by patch; within the faces
};

/// Reads owner and boundary only. Throws MeshError like ReadPolyMesh.
PolyMeshBoundary ReadPolyMeshBoundary(std::string const& folder);

/// The polyMesh folder that `folder` is, or has in constant/polyMesh or polyMesh; empty if there is none.
std::string FindPolyMesh(std::string const& folder);

}  // namespace reference_host
