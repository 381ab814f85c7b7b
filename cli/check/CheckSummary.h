#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/check/CheckedSystem.h"

namespace zyngrad {

/// Number of systems with a condition number in each decade.
struct ConditionHistogram {
  static constexpr int kDecades = 24;
  std::array<std::int64_t, kDecades>
      decade{};                 ///< [k] from 10^k to below 10^(k+1), the last one without an upper limit
  std::int64_t nSingular = 0;   ///< infinite
  std::int64_t nNotFinite = 0;  ///< NaN

  void Add(double condition);
  bool IsEmpty() const;
};

/// What was found at the cells, faces or points of all ranks; the same on every rank.
struct CheckSummary {
  std::int64_t nSystems = 0;
  std::array<std::int64_t, 32> counts{};  ///< [k] systems with the finding 1 << k
  ConditionHistogram histogram;           ///< of those that have a system
  double worstCondition = 0.0;            ///< as CheckedSystem::condition
  double worstRowSum = 0.0;               ///< among the finite ones
  double worstSkewness = 0.0, worstNonOrthogonality = 0.0;
  std::vector<CheckedSystem> worst;  ///< at most kShownWorst, the worst first

  std::int64_t nWrong = 0;      ///< systems whose gravest finding is Severity::Wrong
  std::int64_t nNotFinite = 0;  ///< likewise Severity::NotFinite

  std::int64_t Count(std::uint32_t finding) const;
  bool IsFinite() const { return nNotFinite == 0; }
  bool IsSound() const { return nNotFinite == 0 && nWrong == 0; }
};

constexpr std::size_t kShownWorst = 10;

/// Whether a comes before b among the worst: more severe findings first, then larger condition number, larger
/// skewness and lower numbers. Measures that agree in six digits count as equal, because their round-off may
/// depend on the number of ranks.
bool IsWorse(CheckedSystem const& a, CheckedSystem const& b);

/// Collective. @param[in] own  of this rank
CheckSummary SummariseCheck(Ranks const& ranks, std::vector<CheckedSystem> const& own);

}  // namespace zyngrad
