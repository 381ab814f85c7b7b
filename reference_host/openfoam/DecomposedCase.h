#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Faces that a processor's mesh shares with a neighbour's, in the order that both sides have.
struct ProcessorCut {
  int neighbour = 0;
  std::string patchName;
  int firstFace = 0;  ///< of the processor's mesh
  int nFaces = 0;
};

/// The mesh in one processor folder of a decomposed OpenFOAM case. Faces of a cut are boundary faces here, without patch.
struct ProcessorMesh {
  std::string folder;              ///< the polyMesh folder, for failures
  FaceMesh mesh;                   ///< patches: those of the whole case
  std::vector<ProcessorCut> cuts;  ///< ascending by neighbour

  /// Numbers in the whole mesh, from the files cellProcAddressing, pointProcAddressing and faceProcAddressing. Empty if
  /// the file is not there.
  std::vector<std::int64_t> globalCell;
  std::vector<std::int64_t> globalPoint;
  std::vector<std::int64_t>
      faceAddress;  ///< counted from 1; negative: the face is turned against the whole mesh's
};

/// Whether the folder holds processor folders.
bool IsDecomposedCase(std::string const& folder);

/// The number of folders processor0, processor1, ... Throws MeshError if one of them is missing, and for cases in the
/// collated format (one folder processorsN).
int CountProcessorFolders(std::string const& folder);

/// FOLDER/processorN
std::string ProcessorFolder(std::string const& folder, int processor);

/// The mesh in FOLDER/processorN/constant/polyMesh, checked by CheckMesh. Throws MeshError for cyclic patches that the
/// decomposition has cut, and for cuts that name other processors than there are.
ProcessorMesh ReadProcessorMesh(std::string const& folder, int processor, int nProcessors);

/// One of the addressing files of a polyMesh folder; empty if it is not there.
/// @param[in] file    "cellProcAddressing", ...
/// @param[in] nItems  how many numbers it must have
std::vector<std::int64_t> ReadAddressing(std::string const& polyMesh, std::string const& file,
                                         std::int64_t nItems);

}  // namespace reference_host
