#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "cli/check/CheckedSystem.h"
#include "foundation/DQVector.h"

namespace zyngrad {

/// The sum of a row of weights, to compare with what it should be.
class RowSum {
 public:
  void Add(double weight) {
    sum_ += weight;
    magnitude_ += std::fabs(weight);
  }

  /// The sum of the magnitudes is finite only if all weights are.
  bool IsFinite() const { return std::isfinite(magnitude_); }

  /// The factor by which the result may exceed the members' values, and by which their errors may grow.
  double Magnitude() const { return magnitude_; }

  /// |sum - 1|, for weights of a value.
  double DistanceFromOne() const { return std::fabs(sum_ - 1.0); }

  /// |sum| over the sum of the magnitudes, for weights of a slope, which have a unit; 0 for a row of zeros.
  double DistanceFromZero() const { return magnitude_ > 0.0 ? std::fabs(sum_) / magnitude_ : 0.0; }

 private:
  double sum_ = 0.0, magnitude_ = 0.0;
};

/// Records findings about the places in a stencil: members at the same position, an axis without extent, fewer
/// neighbours than a slope has components. Places within kSamePlace of the stencil's extent count as one.
/// @param[in] points  of all members, in any order; the stencil's own cell is one of them
void CheckPlaces(std::vector<DQVector> const& points, CheckedSystem& system);

/// Records a condition number. If there are several systems for one row, the worst is kept.
void CheckCondition(double condition, CheckedSystem& system);

/// Record a row of weights. @param[in] tolerance  for the distance of its sum from the expected one
void CheckRowOfValue(RowSum const& row, double tolerance, CheckedSystem& system);
void CheckRowOfSlope(RowSum const& row, double tolerance, CheckedSystem& system);

/// Orders condition numbers: NaN is worse than infinity, and infinity is worse than any other.
bool IsWorseCondition(double a, double b);

}  // namespace zyngrad
