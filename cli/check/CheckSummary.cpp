#include "cli/check/CheckSummary.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <tuple>

#include "cli/check/CheckFindings.h"
#include "cli/check/SystemChecks.h"

namespace zyngrad {
namespace {

/// To six significant digits.
double Rounded(double value) {
  if (!std::isfinite(value) || value == 0.0) return value;
  double const unit = std::pow(10.0, std::floor(std::log10(std::fabs(value))) - 5.0);
  double const digits = std::round(value / unit);
  return std::isfinite(digits) ? digits * unit : value;
}

// A system as a row of numbers, to send it between ranks. All counts and numbers are below 2^53.
constexpr std::size_t kRowLength = 12;

void AppendRow(CheckedSystem const& s, std::vector<double>& row) {
  row.insert(row.end(), {static_cast<double>(s.number), static_cast<double>(s.other), s.at[0], s.at[1],
                         s.at[2], static_cast<double>(s.findings), static_cast<double>(s.members),
                         s.condition, s.rowSum, s.volume, s.skewness, s.nonOrthogonality});
}

CheckedSystem SystemOfRow(double const* row) {
  CheckedSystem s;
  s.number = static_cast<std::int64_t>(row[0]);
  s.other = static_cast<std::int64_t>(row[1]);
  std::copy_n(row + 2, 3, s.at);
  s.findings = static_cast<std::uint32_t>(row[5]);
  s.members = static_cast<int>(row[6]);
  s.condition = row[7];
  s.rowSum = row[8];
  s.volume = row[9];
  s.skewness = row[10];
  s.nonOrthogonality = row[11];
  return s;
}

std::vector<CheckedSystem> WorstOf(std::vector<CheckedSystem> systems) {
  std::size_t const n = std::min(systems.size(), kShownWorst);
  std::partial_sort(systems.begin(), systems.begin() + static_cast<std::ptrdiff_t>(n), systems.end(),
                    IsWorse);
  systems.resize(n);
  return systems;
}

/// Collective. Those of all ranks, from the worst of each.
std::vector<CheckedSystem> WorstOfAll(Ranks const& ranks, std::vector<CheckedSystem> const& own) {
  std::vector<double> rows;
  for (CheckedSystem const& system : WorstOf(own)) AppendRow(system, rows);
  std::vector<double> all = ranks.GatherOnFirst(rows);
  ranks.Broadcast(all);
  std::vector<CheckedSystem> systems;
  for (std::size_t k = 0; k < all.size(); k += kRowLength) systems.push_back(SystemOfRow(all.data() + k));
  return WorstOf(std::move(systems));
}

/// Adds one system to the sums and maxima.
void AddSystem(CheckedSystem const& system, CheckSummary& summary) {
  ++summary.nSystems;
  for (std::size_t k = 0; k < summary.counts.size(); ++k) summary.counts[k] += (system.findings >> k) & 1U;
  Severity const gravest = SeverityOf(system.findings);
  summary.nWrong += gravest == Severity::Wrong ? 1 : 0;
  summary.nNotFinite += gravest == Severity::NotFinite ? 1 : 0;
  if (system.condition != 0.0) summary.histogram.Add(system.condition);
  if (IsWorseCondition(system.condition, summary.worstCondition)) summary.worstCondition = system.condition;
  if (std::isfinite(system.rowSum)) summary.worstRowSum = std::max(summary.worstRowSum, system.rowSum);
  summary.worstSkewness = std::max(summary.worstSkewness, system.skewness);
  summary.worstNonOrthogonality = std::max(summary.worstNonOrthogonality, system.nonOrthogonality);
}

/// Collective. Combines the summaries of all ranks.
void AddUp(Ranks const& ranks, CheckSummary& summary) {
  std::vector<std::int64_t*> sums = {&summary.nSystems, &summary.nWrong, &summary.nNotFinite,
                                     &summary.histogram.nSingular, &summary.histogram.nNotFinite};
  for (std::int64_t& count : summary.counts) sums.push_back(&count);
  for (std::int64_t& count : summary.histogram.decade) sums.push_back(&count);
  std::vector<double> own;
  own.reserve(sums.size() + 1);
  for (std::int64_t const* sum : sums) own.push_back(static_cast<double>(*sum));
  own.push_back(summary.worstCondition);
  for (std::int64_t* sum : sums) *sum = 0;
  for (std::vector<double> const& row : ranks.Gather(own)) {
    for (std::size_t k = 0; k < sums.size(); ++k) *sums[k] += static_cast<std::int64_t>(row[k]);
    if (IsWorseCondition(row.back(), summary.worstCondition)) summary.worstCondition = row.back();
  }
  for (double* largest : {&summary.worstRowSum, &summary.worstSkewness, &summary.worstNonOrthogonality})
    *largest = ranks.Max(*largest);
}

}  // namespace

void ConditionHistogram::Add(double condition) {
  if (std::isnan(condition)) {
    ++nNotFinite;
  } else if (std::isinf(condition)) {
    ++nSingular;
  } else {
    double const exponent = condition >= 1.0 ? std::floor(std::log10(condition)) : 0.0;
    ++decade[static_cast<std::size_t>(std::min(exponent, kDecades - 1.0))];
  }
}

bool ConditionHistogram::IsEmpty() const {
  return nSingular == 0 && nNotFinite == 0 &&
         std::all_of(decade.begin(), decade.end(), [](std::int64_t n) { return n == 0; });
}

std::int64_t CheckSummary::Count(std::uint32_t finding) const {
  for (std::size_t k = 0; k < counts.size(); ++k)
    if (finding == 1U << k) return counts[k];
  return 0;
}

bool IsWorse(CheckedSystem const& a, CheckedSystem const& b) {
  Severity const graveA = SeverityOf(a.findings), graveB = SeverityOf(b.findings);
  if (graveA != graveB) return graveA > graveB;
  double const conditionA = Rounded(a.condition), conditionB = Rounded(b.condition);
  if (IsWorseCondition(conditionA, conditionB)) return true;
  if (IsWorseCondition(conditionB, conditionA)) return false;
  double const skewA = Rounded(a.skewness), skewB = Rounded(b.skewness);
  return std::tie(skewB, a.number, a.other) < std::tie(skewA, b.number, b.other);
}

CheckSummary SummariseCheck(Ranks const& ranks, std::vector<CheckedSystem> const& own) {
  CheckSummary summary;
  for (CheckedSystem const& system : own) AddSystem(system, summary);
  AddUp(ranks, summary);
  summary.worst = WorstOfAll(ranks, own);
  return summary;
}

}  // namespace zyngrad
