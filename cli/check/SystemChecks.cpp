#include "cli/check/SystemChecks.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "cli/check/CheckFindings.h"
#include "foundation/BoundingBox.h"

namespace zyngrad {
namespace {

std::array<double, 3> ExtentOf(std::vector<DQVector> const& points) {
  BoundingBox box;
  for (DQVector const& point : points) box.Widen(point.x, point.y, point.z);
  if (points.empty()) return {0.0, 0.0, 0.0};
  return {box.xmax - box.xmin, box.ymax - box.ymin, box.zmax - box.zmin};
}

/// The number of different places; quadratic in the members of one stencil, which are few.
int CountPlaces(std::vector<DQVector> const& points, double within) {
  int count = 0;
  for (std::size_t k = 0; k < points.size(); ++k) {
    bool const isKnown = std::any_of(
        points.begin(), points.begin() + static_cast<std::ptrdiff_t>(k),
        [&](DQVector const& earlier) { return Length(OffsetBetween(earlier, points[k])) <= within; });
    if (!isKnown) ++count;
  }
  return count;
}

void CheckRow(RowSum const& row, double distance, double tolerance, CheckedSystem& system) {
  if (!row.IsFinite()) {
    system.findings |= kHasRowNotFinite;
    system.rowSum = std::nan("");
    return;
  }
  if (distance > tolerance) system.findings |= kHasRowSumOff;
  if (!std::isnan(system.rowSum)) system.rowSum = std::max(system.rowSum, distance);
}

}  // namespace

void CheckPlaces(std::vector<DQVector> const& points, CheckedSystem& system) {
  std::array<double, 3> const extent = ExtentOf(points);
  double const smallest = kSamePlace * *std::max_element(extent.begin(), extent.end());
  if (std::any_of(extent.begin(), extent.end(), [&](double e) { return e <= smallest; }))
    system.findings |= kHasFlatAxis;
  int const nPlaces = CountPlaces(points, smallest);
  if (nPlaces < static_cast<int>(points.size())) system.findings |= kHasCoincidentMembers;
  if (nPlaces - 1 < kFewestNeighbours) system.findings |= kHasFewMembers;
}

bool IsWorseCondition(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && !std::isnan(b);
  return a > b;
}

void CheckCondition(double condition, CheckedSystem& system) {
  if (std::isnan(condition)) {
    system.findings |= kHasSystemNotFinite;
  } else if (condition > kSingularCondition) {
    system.findings |= kIsSingular;
  } else if (condition > kPoorCondition) {
    system.findings |= kIsIllConditioned;
  }
  if (IsWorseCondition(condition, system.condition)) system.condition = condition;
}

void CheckRowOfValue(RowSum const& row, double tolerance, CheckedSystem& system) {
  CheckRow(row, row.DistanceFromOne(), tolerance, system);
  if (row.IsFinite() && row.Magnitude() > kLargeMagnitude) system.findings |= kHasLargeWeights;
}

void CheckRowOfSlope(RowSum const& row, double tolerance, CheckedSystem& system) {
  CheckRow(row, row.DistanceFromZero(), tolerance, system);
}

}  // namespace zyngrad
