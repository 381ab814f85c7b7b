#pragma once

#include <vector>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/SlabGraph.h"

namespace reference_host {

/// Collective. The part 0..communicator.size()-1 of every cell of the own block, by PT-Scotch @cite chevalier2008. Where
/// cells are few, a part may have none. The same graph on the same ranks gives the same parts.
/// @param[in,out] graph  unchanged; PT-Scotch takes even what it only reads by non-const pointers
/// @pre CanPartitionSlabs()
/// @throws MeshError  on every rank: PT-Scotch failed
std::vector<int> PartitionByScotch(MpiCommunicator const& communicator, SlabGraph& graph);

}  // namespace reference_host
