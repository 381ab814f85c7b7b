#include "reference_host/parallel/MpiPieces.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace reference_host {
namespace {

constexpr int kPieceTag = 0;

/// Calls action(offset, length) for each piece in turn.
template <class Action>
void ForEachPieceOf(std::size_t size, std::size_t largest, Action const& action) {
  for (std::size_t offset = 0; offset < size; offset += largest)
    action(offset, static_cast<int>(std::min(largest, size - offset)));
}

}  // namespace

std::vector<std::size_t> GatherSizes(MPI_Comm communicator, std::size_t nOwnBytes) {
  int rank = 0, nRanks = 1;
  MPI_Comm_rank(communicator, &rank);
  MPI_Comm_size(communicator, &nRanks);
  auto const own = static_cast<std::uint64_t>(nOwnBytes);
  std::vector<std::uint64_t> sizes(rank == 0 ? static_cast<std::size_t>(nRanks) : 0);
  MPI_Gather(&own, 1, MPI_UINT64_T, sizes.data(), 1, MPI_UINT64_T, 0, communicator);
  return {sizes.begin(), sizes.end()};
}

void GatherBytes(MPI_Comm communicator, void const* own, std::size_t nOwnBytes,
                 std::vector<std::size_t> const& sizes, void* all, std::size_t largestMessage) {
  int rank = 0;
  MPI_Comm_rank(communicator, &rank);
  if (rank != 0) {
    ForEachPieceOf(nOwnBytes, largestMessage, [&](std::size_t at, int length) {
      MPI_Send(static_cast<char const*>(own) + at, length, MPI_BYTE, 0, kPieceTag, communicator);
    });
    return;
  }
  auto* next = static_cast<char*>(all);
  if (nOwnBytes > 0) std::memcpy(next, own, nOwnBytes);
  next += nOwnBytes;
  for (std::size_t r = 1; r < sizes.size(); ++r) {
    ForEachPieceOf(sizes[r], largestMessage, [&](std::size_t at, int length) {
      MPI_Recv(next + at, length, MPI_BYTE, static_cast<int>(r), kPieceTag, communicator, MPI_STATUS_IGNORE);
    });
    next += sizes[r];
  }
}

void BroadcastBytes(MPI_Comm communicator, void* bytes, std::size_t nBytes, std::size_t largestMessage) {
  ForEachPieceOf(nBytes, largestMessage, [&](std::size_t at, int length) {
    MPI_Bcast(static_cast<char*>(bytes) + at, length, MPI_BYTE, 0, communicator);
  });
}

void ReduceOnAll(MPI_Comm communicator, void const* own, void* all, std::size_t nItems, MPI_Datatype type,
                 MPI_Op operation, std::size_t largestMessage) {
  MPI_Aint lowest = 0, extent = 0;
  MPI_Type_get_extent(type, &lowest, &extent);
  auto const itemSize = static_cast<std::size_t>(extent);
  ForEachPieceOf(nItems, std::max<std::size_t>(1, largestMessage / itemSize), [&](std::size_t at, int n) {
    MPI_Allreduce(static_cast<char const*>(own) + at * itemSize, static_cast<char*>(all) + at * itemSize, n,
                  type, operation, communicator);
  });
}

}  // namespace reference_host
