#pragma once

#include <cstdint>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/points/PointRun.h"
#include "cli/points/UsableCells.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Estimated condition numbers (ConditionEstimate) of many systems. Those that are not numbers count as
/// infinite.
struct StudyCondition {
  std::int64_t nSystems = 0;  ///< looked at; 0: the method has none
  double median = 0.0, worst = 0.0;
};

/// Collective. @param[in] own  of the systems of this rank; the same on every rank afterwards
StudyCondition SummariseConditions(Ranks const& ranks, std::vector<double> const& own);

/// At most so many systems of a rank are looked at, evenly spread.
constexpr int kMostSystems = 2000;

/// Every k-th number of 1..n, with k as small as kMostSystems allows.
std::vector<int> SpreadSample(int n);

// Not collective, all three: the systems of this rank. What the operators print goes nowhere, and the
// partition's base file name is another one afterwards.

/// Of the radial-basis gradient: a system with constant term for each interior cell.
std::vector<double> GradientConditions(reference_host::HostPartition& partition,
                                       RadialBasisSettings const& settings);

/// Of the interpolation to inner faces: the face's system; for method 4 those of its two points on the normal.
std::vector<double> FaceConditions(reference_host::HostPartition& partition,
                                   InterpolationSettings const& settings);

/// Of the interpolation to points: the point's system.
/// @param[in] points  those that this rank serves
std::vector<double> PointConditions(reference_host::HostPartition& partition, UsableCells& usable,
                                    PointSet const& points, InterpolationSettings const& settings);

}  // namespace zyngrad
