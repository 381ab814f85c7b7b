#pragma once

#include <cstdint>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/options/InterpolationSettings.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/points/PointRun.h"
#include "cli/points/UsableCells.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Estimated condition numbers (ConditionEstimate) of many systems. NaN counts as
/// infinite.
struct StudyCondition {
  std::int64_t nSystems = 0;  ///< number of systems in the sample; 0 if the method solves none
  double median = 0.0, worst = 0.0;
};

/// Collective. The same on every rank. @param[in] own  condition numbers of this rank's systems
StudyCondition SummariseConditions(Ranks const& ranks, std::vector<double> const& own);

/// The largest sample of the systems of a rank.
constexpr int kMostSystems = 2000;

/// Every k-th number of 1..n, with the smallest k that gives at most kMostSystems numbers.
std::vector<int> SpreadSample(int n);

// The condition numbers of a sample of this rank's systems. None of the three is collective. What the operators print
// is discarded.

/// For the radial-basis gradient: each interior cell has a system with a constant term.
std::vector<double> GradientConditions(reference_host::HostPartition& partition,
                                       RadialBasisSettings const& settings);

/// For interpolation to inner faces: the face's system; for method 4 the systems of its two points on the normal.
std::vector<double> FaceConditions(reference_host::HostPartition& partition,
                                   InterpolationSettings const& settings);

/// For interpolation to points: the point's system.
/// @param[in] points  the points that this rank serves
std::vector<double> PointConditions(reference_host::HostPartition& partition, UsableCells& usable,
                                    PointSet const& points, InterpolationSettings const& settings);

}  // namespace zyngrad
