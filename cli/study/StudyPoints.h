#pragma once

#include <cstdint>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// At most so many points, and one over, lie in the cells of a mesh of any size up to twice as many.
constexpr std::int64_t kStudyPoints = 2000;

/// The interior cells of this partition with a point in them, ascending: every k-th cell of the mesh, by its
/// number there, with the largest k that still gives kStudyPoints points; all in a smaller mesh.
/// @param[in] nCells  of the whole mesh
std::vector<int> CellsWithPoints(reference_host::HostPartition& partition, std::int64_t nCells);

/// Half-way between the centre of an interior cell and the node that has the lowest number in the mesh: the
/// same place in every partition.
reference_host::Point PointInCell(reference_host::HostPartition& partition, int cell);

}  // namespace zyngrad
