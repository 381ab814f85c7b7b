#include "cli/systems/ConditionEstimate.h"

#include <lapacke.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace zyngrad {

double ConditionEstimate(std::vector<double> matrix, int order) {
  if (!std::all_of(matrix.begin(), matrix.end(), [](double value) { return std::isfinite(value); }))
    return std::numeric_limits<double>::quiet_NaN();
  double const norm = LAPACKE_dlange(LAPACK_ROW_MAJOR, '1', order, order, matrix.data(), order);
  std::vector<lapack_int> pivots(static_cast<std::size_t>(order));
  lapack_int const status =
      LAPACKE_dgetrf(LAPACK_ROW_MAJOR, order, order, matrix.data(), order, pivots.data());
  double reciprocal = 0.0;
  // With a zero pivot there are no factors to estimate from.
  if (status == 0) LAPACKE_dgecon(LAPACK_ROW_MAJOR, '1', order, matrix.data(), order, norm, &reciprocal);
  return 1.0 / reciprocal;
}

}  // namespace zyngrad
