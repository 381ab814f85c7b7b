#pragma once

#include <cstddef>
#include <vector>

#include "cli/systems/ConditionEstimate.h"
#include "foundation/KernelSystem.h"

namespace zyngrad {

/// ConditionEstimate of a system of a face or point, with the matrix that the operator solves.
/// @return 0 without nodes
template <typename Kernel>
double KernelCondition(Kernel const& kernel, KernelSystem& system) {
  auto const order = static_cast<std::size_t>(system.Size());
  if (order == 0) return 0.0;
  double const* const matrix = system.Matrix(kernel);
  return ConditionEstimate(std::vector<double>(matrix, matrix + order * order), system.Size());
}

}  // namespace zyngrad
