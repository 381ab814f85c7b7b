#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "cli/compare_ranks/RankLevel.h"
#include "cli/compare_ranks/RunOnParts.h"
#include "cli/compare_ranks/WholeMesh.h"

namespace zyngrad {

/// A case on one number of ranks compared with the same case on another.
struct RankDifference {
  std::string method, level;
  std::string notRun;
  std::array<double, kLastLayer + 1> largest =
      {};  ///< by distance from the cuts, U/L or U; 0 if there is no item
  std::array<int, kLastLayer + 1> nItems = {};
  double worstRatio = 0.0;      ///< largest ratio of a difference to the level of its item
  bool isRepeatable = false;    ///< a second run, with non-blocking exchange, gave the same bits
  std::int64_t nNotFinite = 0;  ///< items that are infinite or NaN on one of the two numbers of ranks
  std::string whyNotFinite;     ///< set if there are any

  bool KeepsItsPromise() const { return !notRun.empty() || (isRepeatable && worstRatio <= 1.0); }

  /// Whether there was nothing to compare, or numbers that are not finite: keeping the promise then means nothing.
  bool IsVoid() const { return !notRun.empty() || nNotFinite > 0; }
};

/// One number of ranks compared with the first one.
struct RankComparison {
  int nRanks = 1, nReference = 1;
  std::vector<RankDifference> differences;  ///< by case
};

/// Runs all cases on every number of ranks, each twice.
/// @param[in] counts  at least one; the others are compared with the first
std::vector<RankComparison> CompareRankCounts(WholeMesh const& mesh, std::vector<int> const& counts,
                                              RankQuestion const& question);

void PrintComparisons(std::ostream& out, std::vector<RankComparison> const& comparisons);

}  // namespace zyngrad
