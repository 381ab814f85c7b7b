#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "cli/compare_ranks/CompareRanksLevels.h"
#include "cli/compare_ranks/CompareRanksMesh.h"
#include "cli/compare_ranks/CompareRanksRun.h"

namespace zyngrad {

/// A case on one number of ranks against the same case on another.
struct RankDifference {
  std::string method, level;
  std::string notRun;
  std::array<double, kLastLayer + 1> largest = {};  ///< by distance from the cuts, U/L or U; of no item: 0
  std::array<int, kLastLayer + 1> nItems = {};
  double worstRatio = 0.0;      ///< largest difference over the level of its item
  bool isRepeatable = false;    ///< the same bits in a second run, with non-blocking exchange
  std::int64_t nNotFinite = 0;  ///< items that are infinite or NaN on either number of ranks
  std::string whyNotFinite;     ///< where there are any

  bool KeepsItsPromise() const { return !notRun.empty() || (isRepeatable && worstRatio <= 1.0); }

  /// Nothing was to be compared, or numbers that are none: a promise kept in vain.
  bool IsVoid() const { return !notRun.empty() || nNotFinite > 0; }
};

/// One number of ranks against the first one.
struct RankComparison {
  int nRanks = 1, nReference = 1;
  std::vector<RankDifference> differences;  ///< by case
};

/// Runs all cases on every number of ranks, twice.
/// @param[in] counts  at least one; the first is the reference of the others
std::vector<RankComparison> CompareRankCounts(WholeMesh const& mesh, std::vector<int> const& counts,
                                              RankQuestion const& question);

void PrintComparisons(std::ostream& out, std::vector<RankComparison> const& comparisons);

}  // namespace zyngrad
