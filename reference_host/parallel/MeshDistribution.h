#pragma once

#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// The part 0..nParts-1 of every cell: parts of nearly equal size with few faces between them, by METIS with
/// a fixed seed, so the same mesh gives the same parts. Every part gets a cell. Not collective.
/// @cite karypis1998
/// @param[in] meshName  what a failure begins with, such as the file; may be empty
/// Throws MeshError if there are fewer cells than parts.
std::vector<int> PartitionMesh(FaceMesh const& mesh, int nParts, std::string const& meshName = {});

/// Moves one cell at a time from the part that has most into each part without any. The result depends on the
/// arguments alone. @pre there are at least nParts cells
void FillEmptyParts(std::vector<int>& partOfCell, int nParts);

/// Collective. Rank 0 cuts each rank's part out of the mesh and sends it, one after another, so that it never
/// holds more than one of them beside the mesh.
/// @param[in] wholeOnRank0  the mesh; ignored on other ranks
/// @param[in] partOfCell    the rank of each cell; ignored on other ranks
/// @return the own part. If something fails, all ranks throw the same MeshError.
MeshPart DistributeMesh(MpiCommunicator const& communicator, FaceMesh const* wholeOnRank0,
                        std::vector<int> const& partOfCell);

}  // namespace reference_host
