#pragma once

#include "gradient/COperatorGradient.h"

namespace zyngrad {

/// Chooses the method of a wired gradient operator and prepares it. Collective if the operator is.
/// @return whether that succeeded; it fails on all ranks or on none
inline bool InitializeGradient(COperatorGradient& op, int gradientType) {
  constexpr int kInitialized = 1;
  op.getGradType(gradientType);  // takes a reference; the copy is ours
  return op.Initialize() == kInitialized;
}

}  // namespace zyngrad
