#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "cli/systems/ConditionEstimate.h"
#include "foundation/DQMatrix.h"
#include "foundation/DQVector.h"

namespace zyngrad {

/// ConditionEstimate of the system that has the kernel alone, without a constant term, on these nodes.
/// @return 0 without nodes
template <typename Kernel>
double KernelCondition(Kernel const& kernel, std::vector<DQVector> const& nodes) {
  if (nodes.empty()) return 0.0;
  int const n = static_cast<int>(nodes.size());
  std::vector<double> matrix(nodes.size() * nodes.size());
  FillKernelMatrix(kernel, nodes.data(), n, matrix.data(), n);
  return ConditionEstimate(std::move(matrix), n);
}

}  // namespace zyngrad
