#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/partition/MeshQuality.h"

namespace reference_host {

/// A named part of the boundary of the whole mesh.
struct PatchSummary {
  std::string name;
  std::string type;  ///< as in the mesh file, see Patch
  std::optional<BoundaryGroup> group;
  std::string reason = {};          ///< why it has that group, see Patch
  std::int64_t nFaces = 0;          ///< at the boundary
  std::int64_t nPeriodicFaces = 0;  ///< of this patch, if the mesh continues beyond it
};

/// Sizes of a mesh over all its partitions.
struct MeshSummary {
  std::string way;  ///< how the ranks got their parts: "each rank reads a slab, PT-Scotch divides the mesh"
  std::int64_t nCells = 0;
  std::int64_t nNodes = 0;
  std::int64_t nInnerFaces = 0;     ///< between two cells of one partition
  std::int64_t nCutFaces = 0;       ///< between two partitions, each counted once, without periodic ones
  std::int64_t nPeriodicFaces = 0;  ///< at which the mesh is periodic, each pair counted once
  std::array<std::int64_t, 4> facesOfGroup{};  ///< by BoundaryGroup
  std::vector<PatchSummary> patches;           ///< in the order of the mesh file

  int nParts = 1;
  int minCells = 0, maxCells = 0;  ///< interior cells of the smallest and the largest partition
  int maxCutFaces = 0;    ///< largest number of partition faces of a partition, periodic ones included
  int maxNeighbours = 0;  ///< largest number of neighbours of a partition, itself not counted

  QualitySums quality;

  std::int64_t FacesOf(BoundaryGroup group) const { return facesOfGroup[static_cast<std::size_t>(group)]; }
};

}  // namespace reference_host
