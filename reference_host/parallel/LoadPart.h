#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "reference_host/mesh/GroupRules.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/parallel/MeshLoading.h"
#include "reference_host/parallel/MeshSource.h"
#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// One rank's part of a mesh before it has tables, and what only the reader knows about the whole.
struct LoadedPart {
  MeshPart part;            ///< its patches have their groups
  std::int64_t nNodes = 0;  ///< of the whole mesh
  /// By patch: faces in the whole mesh, those at which it is periodic included.
  std::vector<std::int64_t> facesOfPatch;
  MeshSource source;
  std::string way;  ///< how the ranks got their parts, as MeshSummary::way
};

/// Number of faces of each patch, from the patch of each face (-1: inside).
std::vector<std::int64_t> CountFacesByPatch(std::vector<int> const& facePatch, std::size_t nPatches);

/// Collective. Reads or generates a mesh and gives each rank its part, as LoadMesh describes.
/// @throws MeshError  with the same text on every rank
LoadedPart LoadPart(MpiCommunicator const& communicator, std::string const& meshSpec,
                    GroupRules const& groups, MeshLoading const& loading,
                    std::function<void(std::string const&)> const& progress);

}  // namespace reference_host
