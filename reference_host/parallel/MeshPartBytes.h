#pragma once

#include <vector>

#include "reference_host/mesh/MeshPart.h"

namespace reference_host {

/// A part as a row of bytes, for the way to another process of the same program on the same kind of machine.
std::vector<char> PackMeshPart(MeshPart const& part);

/// The part that PackMeshPart was given.
MeshPart UnpackMeshPart(std::vector<char> const& bytes);

}  // namespace reference_host
