#pragma once

#include <mpi.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/BlockRanges.h"

namespace reference_host {

/// Lists of items, one for or from each rank: those of rank r are items[start[r]] .. items[start[r+1]-1].
template <class T>
struct RankLists {
  std::vector<T> items;
  std::vector<std::size_t> start;  ///< [0..nRanks]

  std::size_t Size(int rank) const {
    return start[static_cast<std::size_t>(rank) + 1] - start[static_cast<std::size_t>(rank)];
  }
};

/// Sorts items by rank; those of one rank keep their order.
/// @param[in] rankOf  rankOf(i) is the rank of the i-th item, which itemOf(i) makes; i = 0..n-1. A negative rank leaves
///                    the item out. Both are called twice or once for each i, in ascending order
template <class T, class RankOf, class ItemOf>
RankLists<T> ListsByRank(int nRanks, std::size_t n, RankOf const& rankOf, ItemOf const& itemOf) {
  RankLists<T> lists;
  lists.start.assign(static_cast<std::size_t>(nRanks) + 1, 0);
  for (std::size_t i = 0; i < n; ++i) {
    if (int const rank = rankOf(i); rank >= 0) ++lists.start[static_cast<std::size_t>(rank) + 1];
  }
  for (std::size_t r = 0; r < static_cast<std::size_t>(nRanks); ++r) lists.start[r + 1] += lists.start[r];
  lists.items.resize(lists.start.back());
  std::vector<std::size_t> next(lists.start.begin(), lists.start.end() - 1);
  for (std::size_t i = 0; i < n; ++i) {
    if (int const rank = rankOf(i); rank >= 0)
      lists.items[next[static_cast<std::size_t>(rank)]++] = itemOf(i);
  }
  return lists;
}

/// Collective. Sends each list to its rank.
/// @return the lists from each rank
template <class T>
RankLists<T> SwapLists(MpiCommunicator const& communicator, RankLists<T> const& lists);

/// Collective. For each rank's own `items`, the values that value(own number) has on the rank whose block of
/// `ranges` has the item; own numbers count from 0 within the block. Sorted items without repetition keep it cheap.
/// @return in the order of `items`
template <class T, class Value>
std::vector<T> FetchItems(MpiCommunicator const& communicator, BlockRanges const& ranges,
                          std::vector<std::int64_t> const& items, Value const& value);

/// Collective. The blocks of ranks that have `nOwn` items each, in the order of the ranks.
BlockRanges RangesOf(MpiCommunicator const& communicator, std::int64_t nOwn);

/// Collective. The sum over all ranks.
std::int64_t SumOverRanks(MpiCommunicator const& communicator, std::int64_t own);

// Implementation of the templates.

/// Receives what SwapLists sends, straight into the final place.
void SwapInto(MpiCommunicator const& communicator, char const* bytes, std::vector<std::size_t> const& start,
              std::size_t itemSize, std::vector<std::size_t> const& receiveStart, char* received);

/// By rank: how many items come from it, given how many go to it.
std::vector<std::size_t> SwapSizes(MpiCommunicator const& communicator,
                                   std::vector<std::size_t> const& start);

template <class T>
RankLists<T> SwapLists(MpiCommunicator const& communicator, RankLists<T> const& lists) {
  static_assert(std::is_trivially_copyable_v<T>);
  RankLists<T> received;
  received.start = SwapSizes(communicator, lists.start);
  received.items.resize(received.start.back());
  SwapInto(communicator, reinterpret_cast<char const*>(lists.items.data()), lists.start, sizeof(T),
           received.start, reinterpret_cast<char*>(received.items.data()));
  return received;
}

template <class T, class Value>
std::vector<T> FetchItems(MpiCommunicator const& communicator, BlockRanges const& ranges,
                          std::vector<std::int64_t> const& items, Value const& value) {
  auto const rankOf = [&](std::size_t i) { return ranges.BlockOf(items[i]); };
  RankLists<T> answers;
  {
    RankLists<std::int64_t> const asked =
        SwapLists(communicator, ListsByRank<std::int64_t>(communicator.size(), items.size(), rankOf,
                                                          [&](std::size_t i) { return items[i]; }));
    std::int64_t const first = ranges.First(communicator.rank());
    answers.start = asked.start;
    answers.items.reserve(asked.items.size());
    for (std::int64_t const item : asked.items) answers.items.push_back(value(item - first));
  }
  RankLists<T> const received = SwapLists(communicator, answers);
  answers = {};
  std::vector<T> values(items.size());
  std::vector<std::size_t> next(received.start.begin(), received.start.end() - 1);
  for (std::size_t i = 0; i < items.size(); ++i) {
    values[i] = received.items[next[static_cast<std::size_t>(rankOf(i))]++];
  }
  return values;
}

}  // namespace reference_host
