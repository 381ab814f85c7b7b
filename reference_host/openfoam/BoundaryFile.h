#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace reference_host {

/// A patch as the file "boundary" of a polyMesh has it, with the entries that matter to the files of fields.
struct BoundaryFilePatch {
  std::string name, type;
  std::int64_t nFaces = 0;
  std::int64_t startFace = 0;
  std::string partner;     ///< of a cyclic patch: neighbourPatch
  int neighbour = -1;      ///< of a processor patch: the other processor; else -1
  std::string referPatch;  ///< of a processorCyclic patch: the cyclic patch that the decomposition has cut

  bool IsProcessor() const { return neighbour >= 0; }
};

/// All patches in the order of the file, those without faces and those between processors included.
/// @param[in] polyMesh  the folder
/// @throws MeshError
std::vector<BoundaryFilePatch> ReadBoundaryFile(std::string const& polyMesh);

}  // namespace reference_host
