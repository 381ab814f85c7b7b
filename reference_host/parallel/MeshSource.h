#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/openfoam/PolyMeshReader.h"

namespace reference_host {

/// Where LoadMesh found a mesh: what LoadField needs to read a field of it.
struct MeshSource {
  std::string spec;           ///< file, folder or text of a box
  bool isDecomposed = false;  ///< each rank has read the processor folder of its number
  std::string polyMesh;       ///< rank 0 of a whole OpenFOAM mesh: its polyMesh folder; otherwise empty
  PolyMeshBoundary boundary;  ///< of the polyMesh that this rank has read, without the faces of cuts

  /// Decomposed: [cell of the processor folder] its number in the whole mesh, from 0.
  std::vector<std::int64_t> wholeCell;
};

}  // namespace reference_host
