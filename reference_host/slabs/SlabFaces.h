#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// A face on its way from rank to rank; its nodes travel in a list beside it.
struct FaceHead {
  std::int64_t number;  ///< in the whole mesh
  std::int64_t owner, neighbour;
  int patch;
  int nNodes;
};

/// Faces with their nodes, one after the other.
struct FaceRows {
  std::vector<FaceHead> head;
  std::vector<std::size_t> start = {0};
  std::vector<std::int64_t> node;  ///< of face i: node[start[i]] .. node[start[i+1]-1]
};

/// Own face f of a slab without its nodes.
FaceHead HeadOfFace(MeshSlab const& slab, std::size_t f, int rank);

/// Collective. For each rank's own list of numbers of faces, these faces, in the order of the list.
FaceRows FetchFaces(MpiCommunicator const& communicator, MeshSlab const& slab,
                    std::vector<std::int64_t> const& faces);

/// Collective. How many rounds of `nARound` items the rank with most items takes.
std::size_t CountRounds(MpiCommunicator const& communicator, std::size_t nItems, std::size_t nARound);

}  // namespace reference_host
