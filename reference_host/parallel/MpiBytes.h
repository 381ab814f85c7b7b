#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// Largest size of one message in bytes: MPI counts them with an int.
constexpr std::size_t kLargestMessage = std::size_t{1} << 30;

/// Sends any number of bytes to a rank that calls ReceiveBytes with the same `largestMessage`. Sends nothing
/// if the receiver has no memory for them.
void SendBytes(MpiCommunicator const& communicator, int to, std::vector<char> const& bytes,
               std::size_t largestMessage = kLargestMessage);

/// Tells the rank that calls ReceiveBytes that nothing will be sent.
void SendNothing(MpiCommunicator const& communicator, int to);

/// The bytes that SendBytes of the other rank sends; empty after SendNothing. If it throws std::bad_alloc,
/// the sender continues without sending.
std::optional<std::vector<char>> ReceiveBytes(MpiCommunicator const& communicator, int from,
                                              std::size_t largestMessage = kLargestMessage);

}  // namespace reference_host
