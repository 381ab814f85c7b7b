#include "reference_host/parallel/DecomposedNumbers.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <string>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/parallel/MpiAgreement.h"

namespace reference_host {
namespace {

constexpr std::int64_t kUnnumbered = std::numeric_limits<std::int64_t>::max();

std::int64_t SumOfRanksBefore(MpiCommunicator const& communicator, std::int64_t own) {
  std::int64_t before = 0;
  MPI_Exscan(&own, &before, 1, MPI_INT64_T, MPI_SUM, communicator.get());
  return communicator.rank() == 0 ? 0 : before;  // MPI leaves it undefined on the first rank
}

std::int64_t SumOfAll(MpiCommunicator const& communicator, std::int64_t own) {
  MPI_Allreduce(MPI_IN_PLACE, &own, 1, MPI_INT64_T, MPI_SUM, communicator.get());
  return own;
}

std::int64_t LargestOfAll(MpiCommunicator const& communicator, std::int64_t own) {
  MPI_Allreduce(MPI_IN_PLACE, &own, 1, MPI_INT64_T, MPI_MAX, communicator.get());
  return own;
}

/// Whether every rank has an addressing file, so that it is used. Throws if only some have it.
bool IsOnEveryRank(MpiCommunicator const& communicator, ProcessorMesh const& processor, char const* file,
                   std::vector<std::int64_t> const& numbers) {
  std::int64_t const nWith = SumOfAll(communicator, numbers.empty() ? 0 : 1);
  RunTogether(communicator, [&] {
    if (nWith == 0 || nWith == communicator.size() || !numbers.empty()) return;
    throw MeshError(processor.folder + ": " + file + " is missing, but other processor folders have it");
  });
  return nWith > 0;
}

/// A pseudo-random function of a number: different sets of numbers have different sums of it.
std::uint64_t Scrambled(std::int64_t number) {
  std::uint64_t x = static_cast<std::uint64_t>(number) + 0x9e3779b97f4a7c15U;
  x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9U;
  x = (x ^ (x >> 27)) * 0x94d049bb133111ebU;
  return x ^ (x >> 31);
}

/// Rejects cell numbers that are not 0 .. N-1, each once, over all ranks, without a list of all numbers on
/// any rank.
void CheckCellNumbers(MpiCommunicator const& communicator, ProcessorMesh const& processor) {
  std::int64_t const nOwn = processor.mesh.nCells;
  std::int64_t const nAll = SumOfAll(communicator, nOwn), nBefore = SumOfRanksBefore(communicator, nOwn);
  std::uint64_t excess = 0;  // of the given numbers over a numbering rank by rank
  for (std::int64_t c = 0; c < nOwn; ++c)
    excess += Scrambled(processor.globalCell[c]) - Scrambled(nBefore + c);
  MPI_Allreduce(MPI_IN_PLACE, &excess, 1, MPI_UINT64_T, MPI_SUM, communicator.get());
  RunTogether(communicator, [&] {
    for (std::int64_t const number : processor.globalCell) {
      if (number < 0 || number >= nAll) {
        throw MeshError(processor.folder + ": cellProcAddressing has " + std::to_string(number) +
                        ", which is not in 0 to " + std::to_string(nAll - 1));
      }
    }
  });
  RunTogether(communicator, [&] {
    if (excess != 0) {
      throw MeshError(processor.folder +
                      ": the files cellProcAddressing of all processors together do not name each of the " +
                      std::to_string(nAll) + " cells once");
    }
  });
}

void NumberCells(MpiCommunicator const& communicator, ProcessorMesh const& processor,
                 DecomposedNumbers& numbers) {
  if (IsOnEveryRank(communicator, processor, "cellProcAddressing", processor.globalCell)) {
    CheckCellNumbers(communicator, processor);
    numbers.cell = processor.globalCell;
    return;
  }
  numbers.cell.resize(static_cast<std::size_t>(processor.mesh.nCells));
  std::iota(numbers.cell.begin(), numbers.cell.end(), SumOfRanksBefore(communicator, processor.mesh.nCells));
}

void CheckNodeNumbers(MpiCommunicator const& communicator, ProcessorMesh const& processor,
                      ProcessorCuts const& cuts) {
  std::vector<std::vector<std::int64_t>> const theirs = cuts.SwapNodeValues(processor.globalPoint);
  RunTogether(communicator, [&] {
    std::vector<std::int64_t> sorted = processor.globalPoint;
    std::sort(sorted.begin(), sorted.end());
    if (sorted.front() < 0 || std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) {
      throw MeshError(processor.folder + ": pointProcAddressing has a negative or repeated number");
    }
    if (sorted.back() == kUnnumbered) {
      throw MeshError(processor.folder + ": pointProcAddressing has " + std::to_string(kUnnumbered) +
                      ", more than can be counted");
    }
  });
  RunTogether(communicator, [&] {
    for (std::size_t i = 0; i < theirs.size(); ++i) {
      if (processor.cuts[i].period != 0) continue;  // other nodes than here
      for (std::size_t n = 0; n < theirs[i].size(); ++n) {
        std::int64_t const own = processor.globalPoint[cuts.Nodes(i)[n]];
        if (own == theirs[i][n]) continue;
        throw MeshError(processor.folder + ": pointProcAddressing numbers a node " + std::to_string(own) +
                        " that is " + std::to_string(theirs[i][n]) + " in processor" +
                        std::to_string(processor.cuts[i].neighbour));
      }
    }
  });
}

/// Gives every node the smallest of its values on all ranks. A node may be on ranks that share no face, so
/// the smallest value travels from neighbour to neighbour until nothing changes.
void SpreadSmallest(MpiCommunicator const& communicator, ProcessorMesh const& processor,
                    ProcessorCuts const& cuts, std::vector<std::int64_t>& ofNode) {
  // A node is on each rank at most once, so its smallest value is everywhere after as many rounds as there
  // are ranks. Only cuts that join different nodes take longer; four times the rounds leave room for a few of
  // them.
  std::int64_t const mostRounds = 4 * std::int64_t{communicator.size()} + 16;
  std::int64_t nChanged = 1;
  for (std::int64_t round = 0; nChanged > 0; ++round) {
    if (round == mostRounds) {
      RunTogether(communicator, [&processor] {
        throw MeshError(processor.folder +
                        ": the cuts between the processors join different nodes of one mesh");
      });
    }
    nChanged = 0;
    std::vector<std::vector<std::int64_t>> const theirs = cuts.SwapNodeValues(ofNode);
    for (std::size_t i = 0; i < theirs.size(); ++i) {
      if (processor.cuts[i].period != 0) continue;  // other nodes than here
      for (std::size_t n = 0; n < theirs[i].size(); ++n) {
        std::int64_t& own = ofNode[cuts.Nodes(i)[n]];
        if (theirs[i][n] >= own) continue;
        own = theirs[i][n];
        ++nChanged;
      }
    }
    nChanged = SumOfAll(communicator, nChanged);
  }
}

/// A node on several ranks is numbered by the lowest of these ranks.
void NumberNodesByRank(MpiCommunicator const& communicator, ProcessorMesh const& processor,
                       ProcessorCuts const& cuts, DecomposedNumbers& numbers) {
  std::size_t const n = processor.mesh.points.size();
  std::int64_t const before = SumOfRanksBefore(communicator, static_cast<std::int64_t>(n));
  std::vector<std::int64_t> first(
      n);  // the lowest number among the copies of a node, with all copies counted
  std::iota(first.begin(), first.end(), before);
  SpreadSmallest(communicator, processor, cuts, first);

  std::int64_t nOwn = 0;
  for (std::size_t i = 0; i < n; ++i) nOwn += first[i] == before + static_cast<std::int64_t>(i) ? 1 : 0;
  std::int64_t next = SumOfRanksBefore(communicator, nOwn);
  numbers.node.assign(n, kUnnumbered);
  for (std::size_t i = 0; i < n; ++i) {
    if (first[i] == before + static_cast<std::int64_t>(i)) numbers.node[i] = next++;
  }
  SpreadSmallest(communicator, processor, cuts, numbers.node);
  numbers.nNodes = SumOfAll(communicator, nOwn);
}

}  // namespace

DecomposedNumbers NumberDecomposedMesh(MpiCommunicator const& communicator, ProcessorMesh const& processor,
                                       ProcessorCuts const& cuts) {
  DecomposedNumbers numbers;
  NumberCells(communicator, processor, numbers);
  if (IsOnEveryRank(communicator, processor, "pointProcAddressing", processor.globalPoint)) {
    CheckNodeNumbers(communicator, processor, cuts);
    numbers.node = processor.globalPoint;
    std::int64_t const highest = *std::max_element(numbers.node.begin(), numbers.node.end());
    numbers.nNodes = LargestOfAll(communicator, highest) + 1;
  } else {
    NumberNodesByRank(communicator, processor, cuts, numbers);
  }
  return numbers;
}

}  // namespace reference_host
