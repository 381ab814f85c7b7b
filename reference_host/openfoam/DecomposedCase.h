#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// The faces that a processor's mesh shares with a neighbour's, in the order of both sides. A cyclic patch that the
/// decomposition has cut makes a cut, too, and the neighbour has that of its partner.
struct ProcessorCut {
  int neighbour = 0;
  std::string patchName;
  int firstFace = 0;  ///< in the processor's mesh
  int nFaces = 0;
  int patch = -1;  ///< the cyclic patch that the cut goes through, among those of the mesh; -1: none
  int period = 0;  ///< of the cells beyond the cut, as MeshPart::haloPeriod; set by PeriodSettler
};

/// The mesh in one processor folder of a decomposed OpenFOAM case. Faces of a cut are boundary faces without
/// a patch; those of a cut through a cyclic patch belong to that one, after its own faces.
struct ProcessorMesh {
  std::string folder;              ///< the polyMesh folder, for messages
  FaceMesh mesh;                   ///< patches: those of the whole case
  std::vector<ProcessorCut> cuts;  ///< ascending by neighbour, then by patch

  /// Numbers in the whole mesh, from the files cellProcAddressing, pointProcAddressing and
  /// faceProcAddressing. Empty if there is no such file.
  std::vector<std::int64_t> globalCell;
  std::vector<std::int64_t> globalPoint;
  std::vector<std::int64_t> faceAddress;  ///< counted from 1; negative: reversed in the whole mesh
};

/// Whether the folder has processor folders.
bool IsDecomposedCase(std::string const& folder);

/// The number of folders processor0, processor1, ..., or of the processors of a case in the collated format, whose
/// folders are processorsN, or processorsN_A-B for processors A to B. Throws MeshError if one of them is missing.
int CountProcessorFolders(std::string const& folder);

/// FOLDER/processorN. In a case in the collated format there is no such folder, but FoamFile finds its files.
std::string ProcessorFolder(std::string const& folder, int processor);

/// The folder on disk with the files of a processor: FOLDER/processorN, or else FOLDER/processorsM or
/// FOLDER/processorsM_A-B, where each file has its piece. FOLDER/processorN if there is none.
std::string StoredProcessorFolder(std::string const& folder, int processor);

/// The mesh in FOLDER/processorN/constant/polyMesh, checked by CheckMesh. Throws MeshError for cuts with processors
/// or through cyclic patches that do not exist.
ProcessorMesh ReadProcessorMesh(std::string const& folder, int processor, int nProcessors);

/// The content of an addressing file of a polyMesh folder; empty if there is no such file.
/// @param[in] file    "cellProcAddressing", ...
/// @param[in] nItems  the number of entries that it must have
std::vector<std::int64_t> ReadAddressing(std::string const& polyMesh, std::string const& file,
                                         std::int64_t nItems);

}  // namespace reference_host
