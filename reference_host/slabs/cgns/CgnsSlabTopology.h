#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "reference_host/cgns/CgnsFile.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// A rank's share of a CgnsTopology.
struct CgnsSlabTopology {
  MeshSlab mesh;  ///< without patches; facePatch is -1 everywhere

  /// By own face: number of the first surface element on it; -1: none, or not at the boundary.
  std::vector<std::int64_t> elementOfFace;

  /// By section: this rank has read the elements [0] .. [1] - 1.
  std::vector<std::array<std::int64_t, 2>> ownElements;

  std::vector<std::int64_t> surfacesOfMixed;  ///< own surface elements in MIXED sections, ascending
};

/// Collective. The topology of linear standard cells; as JoinCgnsCells.
CgnsSlabTopology JoinCgnsSlabCells(MpiCommunicator const& communicator, CgnsFile const& file,
                                   std::vector<CgnsSection> const& sections);

/// Collective. The topology of polygons and the polyhedra that they bound; as JoinCgnsPolyhedra.
CgnsSlabTopology JoinCgnsSlabPolyhedra(MpiCommunicator const& communicator, CgnsFile const& file,
                                       std::vector<CgnsSection> const& sections);

/// Collective. Makes the patches and assigns every boundary face to one, as ReadCgns does.
void AssignCgnsSlabPatches(MpiCommunicator const& communicator, CgnsFile const& file,
                           std::vector<CgnsSection> const& sections, CgnsSlabTopology& topology);

}  // namespace reference_host
