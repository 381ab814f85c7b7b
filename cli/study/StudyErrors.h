#pragma once

#include <cstdint>
#include <vector>

#include "cli/base/Ranks.h"

namespace zyngrad {

/// The error of one cell, face or point.
struct StudyError {
  double error = 0.0;   ///< not negative; for a gradient, the Euclidean length of the difference
  double weight = 1.0;  ///< volume of the cell, area of the face, 1 for a point
  bool boundary = false;
};

/// Norms, where w are the weights and e the errors. All are NaN if there are no errors.
struct StudyNorms {
  std::int64_t count = 0;
  double l1 = 0.0;              ///< sum of w e / sum of w
  double l2 = 0.0;              ///< square root of (sum of w e^2 / sum of w)
  double max = 0.0;             ///< largest finite e
  std::int64_t nNotFinite = 0;  ///< l1 and l2 are then not finite
};

/// Number of errors in each quarter of a decade.
struct ErrorHistogram {
  static constexpr int kPerDecade = 4;
  static constexpr int kLowest =
      -18;                            ///< decade where the first bin begins, which also counts smaller errors
  static constexpr int kHighest = 6;  ///< decade where the last bin ends, which also counts larger errors
  static constexpr int kBins = (kHighest - kLowest) * kPerDecade;

  std::vector<std::int64_t> count = std::vector<std::int64_t>(kBins, 0);

  /// Ignores an error that is not finite.
  void Add(double error);
  static double LowerEnd(int bin);  ///< error at which the bin begins; for kBins, where the last bin ends
};

struct StudyErrors {
  StudyNorms interior, boundary;
  ErrorHistogram histogram;  ///< of both regions
};

/// Collective. The sums run in the given order on each rank and then in rank order.
StudyErrors SummariseStudyErrors(Ranks const& ranks, std::vector<StudyError> const& own);

/// Slope of log(error) over log(spacing) between two levels; NaN unless all four are positive and finite and
/// the spacings differ.
double ObservedOrder(double coarseError, double fineError, double coarseSpacing, double fineSpacing);

}  // namespace zyngrad
