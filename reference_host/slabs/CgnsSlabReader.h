#pragma once

#include <string>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// Collective. What ReadCgns reads, in slabs: every rank opens the file and reads its own range of the nodes and of
/// the elements. The slabs of all ranks together say what the FaceMesh of ReadCgns does, and the messages are the same,
/// except that numbers of the whole mesh need not fit an int.
/// @throws MeshError  with the same text on every rank
MeshSlab ReadCgnsSlab(MpiCommunicator const& communicator, std::string const& file);

}  // namespace reference_host
