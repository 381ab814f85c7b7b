#include "reference_host/slabs/UsedNodes.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/MpiRounds.h"

namespace reference_host {

std::vector<std::uint8_t> CountUsers(MpiCommunicator const& communicator, BlockRanges const& fileNodes,
                                     std::vector<std::int64_t> const& used) {
  std::int64_t const first = fileNodes.First(communicator.rank());
  std::vector<std::uint8_t> nUsers(static_cast<std::size_t>(fileNodes.Size(communicator.rank())), 0);
  InRounds(communicator, used.size(), [&](std::size_t begin, std::size_t end) {
    RankLists<std::int64_t> const asked =
        SwapLists(communicator, ListsByRank<std::int64_t>(
                                    communicator.size(), end - begin,
                                    [&](std::size_t i) { return fileNodes.BlockOf(used[begin + i]); },
                                    [&](std::size_t i) { return used[begin + i]; }));
    for (std::int64_t const node : asked.items) {
      std::uint8_t& n = nUsers[static_cast<std::size_t>(node - first)];
      n = static_cast<std::uint8_t>(std::min(n + 1, 2));
    }
  });
  return nUsers;
}

NumberedNodes NumberUsedNodes(MpiCommunicator const& communicator, BlockRanges const& fileNodes,
                              std::vector<std::uint8_t> const& nUsers, std::vector<Point>& points,
                              std::vector<std::int64_t>& used) {
  auto const isUsed = [](std::uint8_t n) { return n > 0; };
  NumberedNodes result;
  result.nodes = RangesOf(communicator, std::count_if(nUsers.begin(), nUsers.end(), isUsed));
  std::int64_t const first = result.nodes.First(communicator.rank());
  std::size_t nKept = 0;
  result.numberOfNode.reserve(nUsers.size());
  for (std::size_t n = 0; n < nUsers.size(); ++n) {
    result.numberOfNode.push_back(isUsed(nUsers[n]) ? first + static_cast<std::int64_t>(nKept) : -1);
    if (isUsed(nUsers[n])) points[nKept++] = points[n];
  }
  points.resize(nKept);
  std::vector<std::int64_t> number(used.size());
  FetchInRounds<std::int64_t>(
      communicator, fileNodes, used,
      [&](std::int64_t own) { return result.numberOfNode[static_cast<std::size_t>(own)]; },
      [&](std::size_t i, std::int64_t value) { number[i] = value; });
  used = std::move(number);
  return result;
}

std::function<std::int64_t(std::int64_t)> NamesOfUsedNodes(
    NumberedNodes const& numbered, BlockRanges const& fileNodes, int rank,
    std::function<std::int64_t(std::int64_t)> numberInFile) {
  std::vector<std::int64_t> kept;  // the own nodes by place in the block of the file; empty: all
  auto const nOwn = static_cast<std::size_t>(numbered.nodes.Size(rank));
  if (nOwn < numbered.numberOfNode.size()) {
    kept.reserve(nOwn);
    for (std::size_t n = 0; n < numbered.numberOfNode.size(); ++n) {
      if (numbered.numberOfNode[n] >= 0) kept.push_back(static_cast<std::int64_t>(n));
    }
  }
  return [kept = std::move(kept), first = numbered.nodes.First(rank), firstInFile = fileNodes.First(rank),
          numberInFile = std::move(numberInFile)](std::int64_t node) {
    std::int64_t const place = kept.empty() ? node - first : kept[static_cast<std::size_t>(node - first)];
    return numberInFile ? numberInFile(firstInFile + place) : firstInFile + place + 1;
  };
}

}  // namespace reference_host
