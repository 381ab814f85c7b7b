#pragma once

#include <vector>

namespace zyngrad {

/// An estimate of the condition number |A| |A^-1| in the 1-norm, the largest sum of a column's absolute values, from
/// the LU factors. It is a lower bound, and seldom less than a third of the number itself.
/// @param[in] matrix  row-major, order x order
/// @return infinity for a matrix that is singular in working precision, NaN for one that is not finite
double ConditionEstimate(std::vector<double> matrix, int order);

}  // namespace zyngrad
