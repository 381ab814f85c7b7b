#pragma once

#include <string>
#include <vector>

#include "cli/field/FieldFiles.h"
#include "cli/gradient/GradientRun.h"

namespace zyngrad {

/// What one time gave. The arrays of the results are dropped once the files of the time are staged.
struct GradientTime {
  std::string name;  ///< empty if the run has no times
  std::vector<FileField>
      fields;  ///< names and boundary values of the fields from files, without their values
  std::vector<MethodResult> results;

  double readSeconds = 0.0, computeSeconds = 0.0, writeSeconds = 0.0;  ///< of the slowest rank

  /// Frees the gradients and the errors of the cells.
  void DropArrays();
};

}  // namespace zyngrad
