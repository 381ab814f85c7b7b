#pragma once

#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// The part 0..nParts-1 of every cell: parts of nearly equal size with few faces between them, by METIS with
/// a fixed seed. The same mesh gives the same parts, and every part has a cell. Not collective.
/// @cite karypis1998
/// @param[in] meshName  what messages begin with, such as the file; may be empty
/// @throws MeshError  there are fewer cells than parts
std::vector<int> PartitionMesh(FaceMesh const& mesh, int nParts, std::string const& meshName = {});

/// Moves one cell from the largest part into each empty part. The result depends on the arguments alone. @pre
/// there are at least nParts cells
void FillEmptyParts(std::vector<int>& partOfCell, int nParts);

/// Collective. Rank 0 cuts each rank's part out of the mesh and sends it, one after another, so that it never
/// holds more than one part besides the mesh.
/// @param[in] wholeOnRank0  the mesh; ignored on other ranks
/// @param[in] partOfCell    the rank of each cell; ignored on other ranks
/// @return the rank's own part; if something fails, all ranks throw the same MeshError
MeshPart DistributeMesh(MpiCommunicator const& communicator, FaceMesh const* wholeOnRank0,
                        std::vector<int> const& partOfCell);

}  // namespace reference_host
