#include "python/src/FileMesh.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "python/src/PartitionHost.h"
#include "reference_host/MeshReader.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/mesh/Periods.h"

namespace zyn_python {
namespace {

using reference_host::FaceMesh;
using reference_host::HostPartition;
using reference_host::MeshPart;

std::vector<std::int64_t> CountFacesOfPatches(FaceMesh const& mesh) {
  std::vector<std::int64_t> nFaces(mesh.patches.size(), 0);
  for (int const patch : mesh.facePatch) {
    if (patch >= 0) ++nFaces[static_cast<std::size_t>(patch)];
  }
  return nFaces;
}

/// The fields of this module have no values beyond periodic boundaries.
void RefusePeriods(FaceMesh const& mesh, std::string const& name) {
  for (reference_host::Period const& period : mesh.periods) {
    if (period.faces.empty() || !IsWanted(period, mesh.patches)) continue;
    throw reference_host::MeshError(
        name + ": " + period.name + " is periodic, which this module does not join; groups={" +
        reference_host::Quoted(mesh.patches[static_cast<std::size_t>(period.patch)].name) +
        ": 'wall'} makes walls of both sides");
  }
}

MeshPart WholeMeshAsPart(FaceMesh&& mesh) {
  FaceMesh const own = std::move(mesh);  // freed before the tables are made
  return reference_host::ExtractPart(own, std::vector<int>(static_cast<std::size_t>(own.nCells), 0), 0, 1);
}

}  // namespace

std::unique_ptr<MeshHost> HostOf(FaceMesh&& mesh, std::string const& name, GroupsByUser const& groups) {
  reference_host::CheckMesh(mesh, name);
  reference_host::AssignBoundaryGroups(mesh.patches, CountFacesOfPatches(mesh), groups, name);
  RefusePeriods(mesh, name);
  mesh.periods.clear();  // of boundaries that have groups
  auto partition = std::make_unique<HostPartition>(WholeMeshAsPart(std::move(mesh)));
  OnePartition alone;
  partition->CompleteHalo(alone);
  return std::make_unique<PartitionHost>(std::move(partition));
}

std::unique_ptr<MeshHost> ReadHost(std::string const& meshSpec, GroupsByUser const& groups) {
  return HostOf(reference_host::IsBoxSpec(meshSpec)
                    ? reference_host::MakeBox(reference_host::ParseBoxSpec(meshSpec))
                    : reference_host::ReadMesh(meshSpec),
                meshSpec, groups);
}

}  // namespace zyn_python
