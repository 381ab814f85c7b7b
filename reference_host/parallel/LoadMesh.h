#pragma once

#include <mpi.h>

#include <functional>
#include <memory>
#include <string>

#include "reference_host/mesh/GroupRules.h"
#include "reference_host/parallel/MeshLoading.h"
#include "reference_host/parallel/MpiExchange.h"
#include "reference_host/parallel/MpiReduction.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/MeshSummary.h"

namespace reference_host {

struct MeshSource;

/// One rank's partition of a mesh, the communication with the other ranks, and the sizes of the whole mesh.
struct LoadedMesh {
  std::unique_ptr<HostPartition> partition;
  std::unique_ptr<MpiExchange> exchange;
  std::unique_ptr<MpiReduction> reduction;
  MeshSummary summary;                       ///< the same on every rank
  std::shared_ptr<MeshSource const> source;  ///< for LoadField
};

/// Collective. Loads a mesh on all ranks of a communicator, one partition each, with halo centres and weights complete:
/// ready for the operators. The same mesh on the same number of ranks gives the same partitions.
///
/// A large file is read in slabs if there are several ranks: no rank ever holds the whole mesh, and PT-Scotch divides it.
/// A small one, and a text file of Gmsh, is read, checked and divided by rank 0. Each rank makes its own part of a box.
/// Each rank reads its own folder of an OpenFOAM case that is decomposed for as many processors as there are ranks.
/// MeshSummary::way says what was done.
/// @param[in] communicator  borrowed; the result has its own duplicates
/// @param[in] meshSpec      file, folder or text of a box, as for ReadMesh and ParseBoxSpec; the same on every rank
/// @param[in] groupsByUser  boundary groups that the user assigns, which override the patches' own; the same on every rank
/// @param[in] progress      called on rank 0 at the start of each stage: "reading", "partitioning" and "distributing" for
///                          a file, "reading" for a decomposed case, "generating" for a box, then always "tables"; may
///                          be empty
/// @param[in] loading       what the user chooses of it; the same on every rank
/// @throws MeshError  with the same text on every rank, whatever failed and wherever
LoadedMesh LoadMesh(MPI_Comm communicator, std::string const& meshSpec, GroupRules const& groupsByUser,
                    std::function<void(std::string const&)> const& progress, MeshLoading const& loading = {});

/// Collective. Writes the part of each cell of a loaded mesh, in the order of the whole mesh, for
/// MeshLoading::partitionFile. Throws MeshError, the same on every rank, if the file exists or cannot be written.
void SavePartition(MPI_Comm communicator, LoadedMesh const& mesh, std::string const& file);

}  // namespace reference_host
