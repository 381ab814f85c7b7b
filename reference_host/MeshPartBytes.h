#pragma once

#include <vector>

#include "reference_host/MeshPart.h"

namespace reference_host {

/// A part as a row of bytes, for the way to another process of the same program on the same kind of machine.
std::vector<char> PackMeshPart(const MeshPart& part);

/// The part that PackMeshPart was given.
MeshPart UnpackMeshPart(const std::vector<char>& bytes);

}  // namespace reference_host
