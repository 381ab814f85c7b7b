#include "reference_host/partition/BoundaryPlaces.h"

#include <cstddef>
#include <map>
#include <utility>

#include "reference_host/partition/HostNumbering.h"

namespace reference_host {

std::vector<BoundaryPlace> GhostPlaces(HostPartition& partition, std::vector<std::int64_t> const& fileCell) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  std::vector<BoundaryPlace> places;
  std::map<std::pair<std::int64_t, std::int64_t>, std::int64_t> nBefore;
  for (FaceKind const kind : kGhostOrder) {
    FaceGroup const faces = FacesOf(kind, mesh);
    for (int f = 1; f <= faces.count; ++f) {
      std::int64_t const patch = partition.patchOfGhost()[static_cast<std::size_t>(faces.other[f])];
      std::int64_t const cell = fileCell[static_cast<std::size_t>(faces.cv[f])];
      places.push_back({cell, patch, nBefore[{cell, patch}]++});
    }
  }
  return places;
}

std::vector<int> CellsAtGhosts(HostPartition& partition) {
  std::vector<int> cells;
  for (FaceKind const kind : kGhostOrder) {
    FaceGroup const faces = FacesOf(kind, *partition.mesh());
    for (int f = 1; f <= faces.count; ++f) cells.push_back(faces.cv[f]);
  }
  return cells;
}

}  // namespace reference_host
