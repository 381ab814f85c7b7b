#pragma once

#include <cmath>
#include <limits>

#include "word.H"

namespace Foam {
namespace zyn {

/// How far the sum of a row of weights is from 1; infinite if it is not a number.
/// @param stencil  its length in element 0; null: there is none
/// @param weights  [1..length]
inline double ErrorOfOne(int const* stencil, double const* weights) {
  if (stencil == nullptr) return 1.0;
  double sum = 0.0;
  for (int k = 1; k <= stencil[0]; ++k) sum += weights[k];
  double const error = std::abs(sum - 1.0);
  return std::isnan(error) ? std::numeric_limits<double>::infinity() : error;
}

/// Collective. Warns if the weights of some process are off by more than what the fields' values bear.
/// @param name   of the faces or points
/// @param error  the largest one of this process
void WarnOfWeights(word const& name, double error);

}  // namespace zyn
}  // namespace Foam
