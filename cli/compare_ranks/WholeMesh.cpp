#include "cli/compare_ranks/WholeMesh.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "reference_host/MeshReader.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/Periods.h"
#include "reference_host/parallel/MeshDistribution.h"

namespace zyngrad {

using reference_host::FaceMesh;

std::vector<int> WholeMesh::PartOfCell(int nParts) const {
  if (reference_host::IsBoxSpec(spec))
    return reference_host::BoxPartOfCell(reference_host::ParseBoxSpec(spec), nParts);
  return reference_host::PartitionMesh(faces, nParts, spec);
}

WholeMesh ReadWholeMesh(std::string const& spec, reference_host::GroupRules const& groupsByUser) {
  WholeMesh mesh;
  mesh.spec = spec;
  mesh.faces = reference_host::IsBoxSpec(spec) ? reference_host::MakeBox(reference_host::ParseBoxSpec(spec))
                                               : reference_host::ReadMesh(spec);
  reference_host::CheckMesh(mesh.faces, spec);
  std::vector<std::int64_t> facesOfPatch(mesh.faces.patches.size(), 0);
  for (int const patch : mesh.faces.facePatch)
    if (patch >= 0) ++facesOfPatch[static_cast<std::size_t>(patch)];
  reference_host::AssignBoundaryGroups(mesh.faces.patches, facesOfPatch, groupsByUser, spec);
  reference_host::JoinPeriods(mesh.faces, spec);
  return mesh;
}

std::vector<int> LayersFromCuts(FaceMesh const& mesh, std::vector<int> const& partOfCell) {
  auto const at = [](int cell) { return static_cast<std::size_t>(cell); };
  std::vector<int> layer(at(mesh.nCells), kLastLayer);
  reference_host::ForEachNeighbours(mesh, [&](int a, int b) {
    if (partOfCell[at(a)] != partOfCell[at(b)]) layer[at(a)] = layer[at(b)] = 0;
  });
  // Each sweep over the faces carries the next layer one cell further.
  for (int next = 1; next < kLastLayer; ++next) {
    reference_host::ForEachNeighbours(mesh, [&](int cellA, int cellB) {
      int& a = layer[at(cellA)];
      int& b = layer[at(cellB)];
      if (b == next - 1) a = std::min(a, next);
      if (a == next - 1) b = std::min(b, next);
    });
  }
  return layer;
}

}  // namespace zyngrad
