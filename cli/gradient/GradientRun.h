#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/field/Expression.h"
#include "cli/field/TestField.h"
#include "cli/gradient/GradientErrors.h"
#include "cli/gradient/GradientMethods.h"
#include "cli/gradient/GradientSizes.h"
#include "cli/options/RadialBasisSettings.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {

/// Seconds on the slowest rank; all ranks begin a call together.
struct MethodTimes {
  double setUp = 0.0;  ///< Initialize of the operator
  double first = 0.0;  ///< first call
  double later = 0.0;  ///< median of the calls after it
  double nsPerCell =
      0.0;  ///< a rank's median of the later calls per interior cell of its own, largest of all ranks
};

/// One gradient that a method computed.
struct GradientResult {
  std::string label;        ///< the method's name; with ".1", ".2", ".3" if there are three different fields
  int field = 0;            ///< 0-based among the fields given
  GradientArrays gradient;  ///< of this rank, [1..NCell]
  std::vector<double> cellError;       ///< of this rank, [1..NInnerCells]; empty without exact gradient
  GradientErrors errors;               ///< of all ranks; meaningless without exact gradient
  std::optional<GradientSizes> sizes;  ///< of all ranks, for a field without exact gradient
};

struct MethodResult {
  GradientMethod const* method = nullptr;
  std::string notRun;                ///< why the method could not be called; only times.setUp is then set
  std::vector<std::string> remarks;  ///< what a user should know about the result, one line each
  MethodTimes times;
  std::vector<GradientResult> gradients;
  std::string whyNotFinite;  ///< empty if all gradients are finite and the span can work

  /// Number of cells where a gradient is infinite or NaN, counted once for each gradient.
  std::int64_t NotFiniteCells() const;
};

/// The errors, or without exact gradient the gradient's own norms.
GradientErrors const& NormsOf(GradientResult const& one);

/// What all methods have in common.
struct GradientCase {
  std::vector<TestField> fields;  ///< 1 or 3
  std::vector<double> exactL2;    ///< of each field; empty for fields without exact gradient
  std::vector<char> isBoundaryCell;
  std::vector<double> weight;  ///< [1..NCell]
  int nSweeps = 3;
  RadialBasisSettings radialBasis;  ///< as in the file that the operator reads
  int nRepeat = 3;                  ///< timed calls after the first
  std::string logFile;              ///< receives what the operators print on this rank
};

/// Collective. Sets up the operator, calls it 1 + nRepeat times and compares its last result with the exact
/// gradient, or measures the result if the exact gradient is not known.
MethodResult RunMethod(Ranks const& ranks, reference_host::LoadedMesh& mesh, GradientMethod const& method,
                       GradientCase& theCase);

}  // namespace zyngrad
