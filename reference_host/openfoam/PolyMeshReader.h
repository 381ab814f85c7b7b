#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/openfoam/PolyMeshPatches.h"

namespace reference_host {

/// Reads an OpenFOAM mesh with cells of any shape: the files points, faces, owner, neighbour and boundary of a polyMesh
/// folder, as FoamFile opens them. Faces, cells and patches keep their order.
///
/// A patch keeps its type. Types that are not boundaries of the flow (empty, wedge, cyclic, processor) have
/// no boundary group of their own: the user maps such a patch by name, or AssignBoundaryGroups rejects the
/// mesh. Pairs of patches of type cyclic are periods, for JoinPeriods.
///
/// Throws MeshError for damaged files. Pass the result to CheckMesh before you use it.
/// @param[in] folder  the polyMesh folder itself
FaceMesh ReadPolyMesh(std::string const& folder);

/// A polyMesh with the data that a FaceMesh does not have.
struct PolyMesh {
  FaceMesh mesh;
  std::vector<PatchFaces> facesOfPatch;  ///< by patch
};

/// Like ReadPolyMesh, with the faces of each patch.
PolyMesh ReadPolyMeshWithPatches(std::string const& folder);

/// The boundary faces of a polyMesh and their cells: what the boundary values of a field file refer to.
struct PolyMeshBoundary {
  std::vector<std::int64_t> owner;  ///< the cell of each face
  std::vector<Patch> patches;
  std::vector<PatchFaces> facesOfPatch;  ///< by patch: `first` and `count` within `owner`
};

/// The boundary faces patch by patch, each patch in the order of its files. The faces of cuts, which have no patch, come
/// last: a field file has values for them, too.
PolyMeshBoundary BoundaryOf(FaceMesh const& mesh);

/// The polyMesh folder: `folder` itself, or its subfolder constant/polyMesh or polyMesh; empty if there is
/// none.
std::string FindPolyMesh(std::string const& folder);

}  // namespace reference_host
