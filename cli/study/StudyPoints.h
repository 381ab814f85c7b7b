#pragma once

#include <cstdint>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The number of points to aim at; a large mesh has this many up to twice as many, a smaller mesh one per cell.
constexpr std::int64_t kStudyPoints = 2000;

/// The interior cells of this partition with a point in them, in ascending order: every k-th cell of the mesh, with
/// the largest k that still gives kStudyPoints points; all cells of a smaller mesh.
/// @param[in] nCells  of the whole mesh
std::vector<int> CellsWithPoints(reference_host::HostPartition& partition, std::int64_t nCells);

/// The point half-way between the centre of an interior cell and that of its nodes with the lowest number in the
/// mesh, so that it is the same in every partition.
reference_host::Point PointInCell(reference_host::HostPartition& partition, int cell);

}  // namespace zyngrad
