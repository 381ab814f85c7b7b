#include "reference_host/partition/BoundaryPlaces.h"

#include <cstddef>
#include <map>
#include <utility>

namespace reference_host {

std::vector<BoundaryPlace> GhostPlaces(HostPartition& partition, std::vector<std::int64_t> const& fileCell) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  std::vector<BoundaryPlace> places;
  std::map<std::pair<std::int64_t, std::int64_t>, std::int64_t> nBefore;
  // Ghost cells are numbered group by group in this order.
  auto const add = [&](int nFaces, int const* cells, int const* ghosts) {
    for (int f = 1; f <= nFaces; ++f) {
      std::int64_t const patch = partition.patchOfGhost()[static_cast<std::size_t>(ghosts[f])];
      std::int64_t const cell = fileCell[static_cast<std::size_t>(cells[f])];
      places.push_back({cell, patch, nBefore[{cell, patch}]++});
    }
  };
  add(mesh.NInlet, mesh.ijInletCV, mesh.ijInlet);
  add(mesh.NOutlet, mesh.ijOutletCV, mesh.ijOutlet);
  add(mesh.NSymmetry, mesh.ijSymmetryCV, mesh.ijSymmetry);
  add(mesh.NWall, mesh.ijWallCV, mesh.ijWall);
  return places;
}

}  // namespace reference_host
