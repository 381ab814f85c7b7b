#pragma once

#include <string>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// Whether ReadGmshSlab can read the file: a binary Gmsh file of version 4.1 or 2.2. Looks at its first bytes only; false
/// for a file that cannot be read.
bool HasGmshSlabs(std::string const& file);

/// Collective. The mesh that ReadGmsh makes of the file, in slabs: rank 0 finds the blocks of the file, and each rank
/// reads a share of them. The messages are those of ReadGmsh.
/// @pre HasGmshSlabs(file)
/// @throws MeshError  with the same text on every rank
MeshSlab ReadGmshSlab(MpiCommunicator const& communicator, std::string const& file);

}  // namespace reference_host
