#pragma once

#include <string>
#include <vector>

#include "reference_host/mesh/MeshPart.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// Whether the geometry of the parts is checked as CheckMesh does.
enum class CheckGeometry { No, Yes };

/// Collective. Gives each rank its part of a mesh in slabs, equal in every field to what ExtractPart cuts out of the
/// whole mesh. Part r goes to rank r. No rank ever holds more than its slab and its part, with some surroundings.
/// @param[in,out] slab        its tables are released as they are sent
/// @param[in] partOfOwnCell   the part of each cell of the own block of cells
/// @param[in] meshName        what messages begin with, such as the file; may be empty
/// @pre  the slab has passed CheckSlabTables, its periods are joined (JoinSlabPeriods)
/// @throws MeshError  with the same text on every rank: a part number out of range, a part with more items than an int
///   can count, a fault of the geometry
MeshPart DistributeSlab(MpiCommunicator const& communicator, MeshSlab&& slab,
                        std::vector<int> const& partOfOwnCell, std::string const& meshName,
                        CheckGeometry check = CheckGeometry::Yes);

}  // namespace reference_host
