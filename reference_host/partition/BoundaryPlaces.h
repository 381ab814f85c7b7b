#pragma once

#include <cstdint>
#include <vector>

#include "reference_host/partition/HostPartition.h"

namespace reference_host {

/// A boundary face without its number, which a partition does not keep: the faces of one cell in one patch stand in the
/// same order everywhere.
struct BoundaryPlace {
  std::int64_t cell = 0;     ///< number that the mesh file has for it, from 0
  std::int64_t patch = 0;    ///< place among the patches
  std::int64_t ordinal = 0;  ///< which of the cell's faces in the patch, from 0
};

/// The place of every ghost cell of a partition, first that of the lowest ghost cell.
/// @param[in] fileCell  [1..NInnerCells] number that the mesh file has for an interior cell, from 0
std::vector<BoundaryPlace> GhostPlaces(HostPartition& partition, std::vector<std::int64_t> const& fileCell);

}  // namespace reference_host
