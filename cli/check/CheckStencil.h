#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "cli/check/CheckedSystem.h"
#include "foundation/DQVector.h"

namespace zyngrad {

/// The sum of a row of weights against what it should be.
class RowSum {
 public:
  void Add(double weight) {
    sum_ += weight;
    magnitude_ += std::fabs(weight);
  }

  /// A sum of magnitudes is finite only if all its terms are.
  bool IsFinite() const { return std::isfinite(magnitude_); }

  /// How much larger than the members' values the result can be, and how much an error of theirs grows.
  double Magnitude() const { return magnitude_; }

  /// |sum - 1|, for weights of a value.
  double DistanceFromOne() const { return std::fabs(sum_ - 1.0); }

  /// |sum| over the sum of magnitudes, for weights of a slope, which have a unit; 0 for a row of zeros.
  double DistanceFromZero() const { return magnitude_ > 0.0 ? std::fabs(sum_) / magnitude_ : 0.0; }

 private:
  double sum_ = 0.0, magnitude_ = 0.0;
};

/// Enters what is to be found in the places of a stencil: members at one position, an axis without extent,
/// fewer other places than a slope has components. Places within kSamePlace of the stencil's extent are one.
/// @param[in] points  each member's, in any order; a stencil's own cell is one of them
void CheckPlaces(std::vector<DQVector> const& points, CheckedSystem& system);

/// Enters a condition number; of several systems behind one row the worst is kept.
void CheckCondition(double condition, CheckedSystem& system);

/// Enter a row of weights. @param[in] tolerance  for its distance
void CheckRowOfValue(RowSum const& row, double tolerance, CheckedSystem& system);
void CheckRowOfSlope(RowSum const& row, double tolerance, CheckedSystem& system);

/// A condition number as a measure of badness: NaN beyond infinity beyond the others.
bool IsWorseCondition(double a, double b);

}  // namespace zyngrad
