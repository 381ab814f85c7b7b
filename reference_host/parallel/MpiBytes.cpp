#include "reference_host/parallel/MpiBytes.h"

#include <algorithm>
#include <cstdint>
#include <new>

namespace reference_host {
namespace {

enum Tag { kSizeTag, kReadyTag, kBytesTag };

constexpr std::int64_t kNothing = -1;

void SendSize(MpiCommunicator const& communicator, int to, std::int64_t size) {
  MPI_Send(&size, 1, MPI_INT64_T, to, kSizeTag, communicator.get());
}

/// Calls action(offset, length) for each message in turn.
template <class Action>
void ForEachMessage(std::size_t size, std::size_t largestMessage, Action const& action) {
  for (std::size_t offset = 0; offset < size; offset += largestMessage) {
    action(offset, static_cast<int>(std::min(largestMessage, size - offset)));
  }
}

}  // namespace

void SendBytes(MpiCommunicator const& communicator, int to, std::vector<char> const& bytes,
               std::size_t largestMessage) {
  SendSize(communicator, to, static_cast<std::int64_t>(bytes.size()));
  int isReady = 0;
  MPI_Recv(&isReady, 1, MPI_INT, to, kReadyTag, communicator.get(), MPI_STATUS_IGNORE);
  if (isReady == 0) return;
  ForEachMessage(bytes.size(), largestMessage, [&](std::size_t offset, int length) {
    MPI_Send(bytes.data() + offset, length, MPI_BYTE, to, kBytesTag, communicator.get());
  });
}

void SendNothing(MpiCommunicator const& communicator, int to) { SendSize(communicator, to, kNothing); }

std::optional<std::vector<char>> ReceiveBytes(MpiCommunicator const& communicator, int from,
                                              std::size_t largestMessage) {
  std::int64_t size = 0;
  MPI_Recv(&size, 1, MPI_INT64_T, from, kSizeTag, communicator.get(), MPI_STATUS_IGNORE);
  if (size == kNothing) return std::nullopt;

  auto const answer = [&](int isReady) {
    MPI_Send(&isReady, 1, MPI_INT, from, kReadyTag, communicator.get());
  };
  std::vector<char> bytes;
  try {
    bytes.resize(static_cast<std::size_t>(size));
  } catch (std::bad_alloc const&) {
    answer(0);
    throw;
  }
  answer(1);
  ForEachMessage(bytes.size(), largestMessage, [&](std::size_t offset, int length) {
    MPI_Recv(bytes.data() + offset, length, MPI_BYTE, from, kBytesTag, communicator.get(), MPI_STATUS_IGNORE);
  });
  return bytes;
}

}  // namespace reference_host
