#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace Foam {
namespace zyn {

/// The largest deviation from 1 of a row's sum of weights; infinite if a sum is not a number.
/// @param stencils,weights  rows [1..n], the length of each in element 0 of its stencil
inline double LargestDeviationFromOne(int const* const* stencils, double const* const* weights, int n) {
  double largest = 0.0;
  for (int i = 1; i <= n; ++i) {
    double sum = 0.0;
    for (int k = 1; k <= stencils[i][0]; ++k) sum += weights[i][k];
    double const deviation = std::abs(sum - 1.0);
    largest = std::isnan(deviation) ? std::numeric_limits<double>::infinity() : std::max(largest, deviation);
  }
  return largest;
}

}  // namespace zyn
}  // namespace Foam
