#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// The faces of a patch, and for a patch of type processor the two processors that it connects.
struct PatchFaces {
  std::int64_t first = 0;  ///< counted from 0 among all faces of the mesh
  std::int64_t count = 0;
  std::int64_t processor = -1;  ///< the one whose folder this is; -1: not given
  std::int64_t neighbour = -1;
  std::string referPatch = {};  ///< of type processorCyclic: the cyclic patch that the cut goes through
};

/// A pair of patches of type cyclic. Face firstFace + k lies on face firstPartner + k, k = 0 .. count-1.
struct CyclicFaces {
  Period period;  ///< without faces
  std::int64_t firstFace = 0, firstPartner = 0;
  std::int64_t count = 0;
};

/// What the file "boundary" of a polyMesh says.
struct PolyMeshPatches {
  std::vector<Patch> patches;
  std::vector<PatchFaces> facesOfPatch;  ///< by patch
  std::vector<CyclicFaces> periods;
};

/// Reads the file and checks that each boundary face is in one patch.
/// @param[in] folder  the polyMesh folder itself
/// @param[in] firstFace,endFace  the boundary faces are firstFace .. endFace-1
/// @throws MeshError
PolyMeshPatches ReadPolyMeshPatches(std::string const& folder, std::int64_t firstFace, std::int64_t endFace);

}  // namespace reference_host
