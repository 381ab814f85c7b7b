#pragma once

#include <vector>

#include "reference_host/mesh/MeshPart.h"

namespace reference_host {

/// A part as bytes, to be sent to another process of the same program on the same kind of machine.
std::vector<char> PackMeshPart(MeshPart const& part);

/// The part that PackMeshPart has packed.
MeshPart UnpackMeshPart(std::vector<char> const& bytes);

}  // namespace reference_host
