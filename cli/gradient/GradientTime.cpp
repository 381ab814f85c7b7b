#include "cli/gradient/GradientTime.h"

namespace zyngrad {

void GradientTime::DropArrays() {
  for (MethodResult& result : results) {
    for (GradientResult& one : result.gradients) {
      one.gradient = {};
      one.cellError = {};
      one.cellError.shrink_to_fit();
    }
  }
}

}  // namespace zyngrad
