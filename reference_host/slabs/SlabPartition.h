#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// Whether the MPI library was started so that PartitionSlab may be called: with MPI_THREAD_MULTIPLE.
bool CanPartitionSlabs();

/// PartitionSlab gives meshes of up to so many cells to METIS on rank 0, in less time than the ranks need to agree on
/// anything.
constexpr std::int64_t kCellsOfSmallMesh = 20'000;

/// Collective. The part 0..communicator.size()-1 of every cell of the own block: parts of nearly equal size with few
/// faces between them, by PT-Scotch @cite chevalier2008, or by METIS where the mesh is small. The same mesh
/// on the same number of ranks with the same blocks gives the same parts, and every part has a cell.
/// @param[in] slab      of a mesh whose periods are joined
/// @param[in] meshName  what messages begin with, such as the file; may be empty
/// @pre CanPartitionSlabs()
/// @throws MeshError  on every rank: there are fewer cells than ranks
std::vector<int> PartitionSlab(MpiCommunicator const& communicator, MeshSlab const& slab,
                               std::string const& meshName = {});

}  // namespace reference_host
