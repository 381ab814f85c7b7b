#pragma once

#include <cstdint>
#include <vector>

#include "reference_host/partition/HostPartition.h"

namespace reference_host {

/// Identifies a boundary face without its number, which a partition does not keep: the faces of one cell in
/// one patch have the same order everywhere.
struct BoundaryPlace {
  std::int64_t cell = 0;     ///< its number in the mesh file, from 0
  std::int64_t patch = 0;    ///< position among the patches
  std::int64_t ordinal = 0;  ///< which of the cell's faces in the patch, from 0
};

/// The places of the ghost cells of a partition, ascending by ghost cell.
/// @param[in] fileCell  [1..NInnerCells] number of an interior cell in the mesh file, from 0
std::vector<BoundaryPlace> GhostPlaces(HostPartition& partition, std::vector<std::int64_t> const& fileCell);

/// The interior cells at the ghost cells of a partition, ascending by ghost cell.
std::vector<int> CellsAtGhosts(HostPartition& partition);

}  // namespace reference_host
