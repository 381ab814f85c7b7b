#include "reference_host/slabs/MpiLists.h"

#include <algorithm>
#include <cstring>

#include "reference_host/parallel/MpiBytes.h"

namespace reference_host {
namespace {

constexpr int kTag = 0;

/// Calls action(offset, length) for the pieces of a message.
template <class Action>
void ForEachPiece(std::size_t begin, std::size_t end, Action const& action) {
  for (std::size_t at = begin; at < end; at += kLargestMessage) {
    action(at, static_cast<int>(std::min(kLargestMessage, end - at)));
  }
}

}  // namespace

std::vector<std::size_t> SwapSizes(MpiCommunicator const& communicator,
                                   std::vector<std::size_t> const& start) {
  auto const n = static_cast<std::size_t>(communicator.size());
  std::vector<std::uint64_t> send(n), receive(n);
  for (std::size_t r = 0; r < n; ++r) send[r] = start[r + 1] - start[r];
  MPI_Alltoall(send.data(), 1, MPI_UINT64_T, receive.data(), 1, MPI_UINT64_T, communicator.get());
  std::vector<std::size_t> receiveStart(n + 1, 0);
  for (std::size_t r = 0; r < n; ++r) receiveStart[r + 1] = receiveStart[r] + receive[r];
  return receiveStart;
}

void SwapInto(MpiCommunicator const& communicator, char const* bytes, std::vector<std::size_t> const& start,
              std::size_t itemSize, std::vector<std::size_t> const& receiveStart, char* received) {
  auto const own = static_cast<std::size_t>(communicator.rank());
  std::vector<MPI_Request> requests;
  for (int rank = 0; rank < communicator.size(); ++rank) {
    auto const r = static_cast<std::size_t>(rank);
    if (r == own) continue;
    ForEachPiece(receiveStart[r] * itemSize, receiveStart[r + 1] * itemSize, [&](std::size_t at, int length) {
      MPI_Irecv(received + at, length, MPI_BYTE, rank, kTag, communicator.get(), &requests.emplace_back());
    });
    ForEachPiece(start[r] * itemSize, start[r + 1] * itemSize, [&](std::size_t at, int length) {
      MPI_Isend(bytes + at, length, MPI_BYTE, rank, kTag, communicator.get(), &requests.emplace_back());
    });
  }
  if (start[own + 1] > start[own]) {
    std::memcpy(received + receiveStart[own] * itemSize, bytes + start[own] * itemSize,
                (start[own + 1] - start[own]) * itemSize);
  }
  MPI_Waitall(static_cast<int>(requests.size()), requests.data(), MPI_STATUSES_IGNORE);
}

BlockRanges RangesOf(MpiCommunicator const& communicator, std::int64_t nOwn) {
  std::vector<std::int64_t> starts(static_cast<std::size_t>(communicator.size()) + 1, 0);
  MPI_Allgather(&nOwn, 1, MPI_INT64_T, starts.data() + 1, 1, MPI_INT64_T, communicator.get());
  for (std::size_t r = 1; r < starts.size(); ++r) starts[r] += starts[r - 1];
  return BlockRanges(std::move(starts));
}

std::int64_t SumOverRanks(MpiCommunicator const& communicator, std::int64_t own) {
  MPI_Allreduce(MPI_IN_PLACE, &own, 1, MPI_INT64_T, MPI_SUM, communicator.get());
  return own;
}

}  // namespace reference_host
