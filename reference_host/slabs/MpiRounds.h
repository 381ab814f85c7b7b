#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/SlabFaces.h"

namespace reference_host {

/// Items that a rank sends in one round: some ten megabytes.
constexpr std::size_t kItemsOfRound = std::size_t{1} << 17;

/// Collective. Calls action(begin, end) for pieces of 0..n-1, equally often on every rank, perhaps with empty pieces.
template <class Action>
void InRounds(MpiCommunicator const& communicator, std::size_t n, Action const& action) {
  std::size_t const nRounds = CountRounds(communicator, n, kItemsOfRound);
  for (std::size_t round = 0; round < nRounds; ++round) {
    action(std::min(n, round * kItemsOfRound), std::min(n, (round + 1) * kItemsOfRound));
  }
}

/// Collective. FetchItems in rounds. Calls take(i, value) for each item.
template <class T, class Value, class Take>
void FetchInRounds(MpiCommunicator const& communicator, BlockRanges const& ranges,
                   std::vector<std::int64_t> const& items, Value const& value, Take const& take) {
  InRounds(communicator, items.size(), [&](std::size_t begin, std::size_t end) {
    std::vector<T> const values =
        FetchItems<T>(communicator, ranges,
                      std::vector<std::int64_t>(items.begin() + static_cast<std::ptrdiff_t>(begin),
                                                items.begin() + static_cast<std::ptrdiff_t>(end)),
                      value);
    for (std::size_t i = begin; i < end; ++i) take(i, values[i - begin]);
  });
}

}  // namespace reference_host
