#pragma once

#include <vector>

namespace zyngrad {

/// Estimate of the condition number |A| |A^-1| in the 1-norm (largest sum of a column's absolute values), from
/// the LU factors; a lower bound, seldom less than a third of the number itself.
/// @param[in] matrix  row-major, order x order
/// @return infinity for a matrix that is singular to working precision, NaN for one that is not finite
double ConditionEstimate(std::vector<double> matrix, int order);

}  // namespace zyngrad
