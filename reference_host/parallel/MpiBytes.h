#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// Bytes of one message at most: MPI counts them with an int.
constexpr std::size_t kLargestMessage = std::size_t{1} << 30;

/// Sends any number of bytes to a rank that calls ReceiveBytes with the same `largestMessage`. If the
/// receiver has no memory for them, they are not sent.
void SendBytes(MpiCommunicator const& communicator, int to, std::vector<char> const& bytes,
               std::size_t largestMessage = kLargestMessage);

/// Lets the rank that calls ReceiveBytes know that there is nothing for it.
void SendNothing(MpiCommunicator const& communicator, int to);

/// What SendBytes of the other rank sends; empty after SendNothing. Throws std::bad_alloc, after which the
/// sender is free to go on.
std::optional<std::vector<char>> ReceiveBytes(MpiCommunicator const& communicator, int from,
                                              std::size_t largestMessage = kLargestMessage);

}  // namespace reference_host
