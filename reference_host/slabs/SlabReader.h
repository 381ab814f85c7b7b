#pragma once

#include <string>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// Whether a mesh file can be read in slabs, and whether it should be.
struct SlabOffer {
  std::string refusal;   ///< why it cannot, for a message; empty: it can
  bool isLarge = false;  ///< the whole would take much time and memory on one rank
};

/// Looks at the format and the size of a mesh. Throws MeshError as FormatOf does.
SlabOffer OfferSlabs(std::string const& path);

/// Collective. Reads a mesh in any format that OfferSlabs does not refuse; ReadMesh is its counterpart for the whole.
/// @throws MeshError  with the same text on every rank
MeshSlab ReadMeshSlab(MpiCommunicator const& communicator, std::string const& path);

}  // namespace reference_host
