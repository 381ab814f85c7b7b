#pragma once

#include <memory>
#include <string>
#include <vector>

#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// A box whose patches have the groups of their names.
inline reference_host::FaceMesh BoxWithGroups(std::string const& spec) {
  reference_host::FaceMesh mesh = reference_host::MakeBox(reference_host::ParseBoxSpec(spec));
  for (auto& patch : mesh.patches) patch.group = reference_host::GroupByName(patch.name, patch.type);
  return mesh;
}

/// A whole box as one partition.
inline std::unique_ptr<reference_host::HostPartition> BoxPartition(std::string const& spec) {
  reference_host::FaceMesh const mesh = BoxWithGroups(spec);
  std::vector<int> const partOfCell(static_cast<std::size_t>(mesh.nCells), 0);
  return std::make_unique<reference_host::HostPartition>(SplitMesh(mesh, partOfCell, 1).front());
}

}  // namespace zyngrad
