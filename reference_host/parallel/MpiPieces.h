#pragma once

#include <mpi.h>

#include <cstddef>
#include <vector>

#include "reference_host/parallel/MpiBytes.h"

namespace reference_host {

// Collective operations on any number of bytes or items. MPI's own count them with an int, so they are done in pieces.

/// Collective. The sizes in bytes of what all ranks have, in rank order, on rank 0; empty on the others.
std::vector<std::size_t> GatherSizes(MPI_Comm communicator, std::size_t nOwnBytes);

/// Collective. The bytes of all ranks one after the other, in rank order, on rank 0.
/// @param[in]  sizes  from GatherSizes
/// @param[out] all    on rank 0: the sum of the sizes; not used on the others
void GatherBytes(MPI_Comm communicator, void const* own, std::size_t nOwnBytes,
                 std::vector<std::size_t> const& sizes, void* all,
                 std::size_t largestMessage = kLargestMessage);

/// Collective. The bytes of rank 0, on every rank. @param[in] nBytes  the same on every rank
void BroadcastBytes(MPI_Comm communicator, void* bytes, std::size_t nBytes,
                    std::size_t largestMessage = kLargestMessage);

/// Collective. MPI_Allreduce. @param[in] nItems  the same on every rank
void ReduceOnAll(MPI_Comm communicator, void const* own, void* all, std::size_t nItems, MPI_Datatype type,
                 MPI_Op operation, std::size_t largestMessage = kLargestMessage);

}  // namespace reference_host
