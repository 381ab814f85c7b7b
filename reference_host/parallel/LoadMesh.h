#pragma once

#include <mpi.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "reference_host/parallel/MpiExchange.h"
#include "reference_host/parallel/MpiReduction.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/MeshSummary.h"

namespace reference_host {

/// One rank's partition of a mesh, complete with what it needs to talk to the others, and the sizes of the
/// whole.
struct LoadedMesh {
  std::unique_ptr<HostPartition> partition;
  std::unique_ptr<MpiExchange> exchange;
  std::unique_ptr<MpiReduction> reduction;
  MeshSummary summary;  ///< the same on every rank
};

/// Collective. Brings a mesh to all ranks of a communicator, one partition each: halo and weights complete,
/// ready for the operators. The same mesh on as many ranks gives the same partitions.
///
/// A file is read, checked and divided by rank 0; each rank makes its own part of a box, and reads its own folder of
/// an OpenFOAM case that is decomposed for as many processors as there are ranks.
/// @param[in] communicator  borrowed; what is returned has its own duplicates of it
/// @param[in] meshSpec      file, folder or text of a box, as for ReadMesh and ParseBoxSpec; the same on
/// every rank
/// @param[in] groupsByUser  boundary groups by patch name, which go before those that patches have by
/// themselves; the
///                          same on every rank
/// @param[in] progress      called on rank 0 at the beginning of each stage: "reading", "partitioning" and
/// "distributing",
///                          or "reading" alone for a decomposed case, or "generating" for a box, then "tables"; may be empty
/// Throws MeshError, with the same text on every rank, whatever failed and wherever.
LoadedMesh LoadMesh(MPI_Comm communicator, std::string const& meshSpec,
                    std::map<std::string, BoundaryGroup> const& groupsByUser,
                    std::function<void(std::string const&)> const& progress);

}  // namespace reference_host
