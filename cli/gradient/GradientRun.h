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
  double first = 0.0;  ///< first call; NaN if that was at an earlier time
  double later = 0.0;  ///< median of the calls after it
  double nsPerCell =
      0.0;  ///< a rank's median of the later calls per interior cell of its own, largest of all ranks
};

/// The gradient of a scalar, or of one component of a vector, that a method computed.
struct GradientResult {
  std::string label;      ///< the method's name; with ".1", ".2", ".3" if there are three different formulas
  int field = 0;          ///< 0-based among the fields given
  int component = 0;      ///< of that field, 0-based
  std::string fieldName;  ///< "p", or "U.x" of a vector; empty for a formula
  GradientArrays gradient;             ///< of this rank, [1..NCell]
  std::vector<double> cellError;       ///< of this rank, [1..NInnerCells]; empty without exact gradient
  GradientErrors errors;               ///< of all ranks; meaningless without exact gradient
  std::optional<GradientSizes> sizes;  ///< of all ranks, for a field without exact gradient
};

struct MethodResult {
  GradientMethod const* method = nullptr;
  std::string notRun;                ///< why the method could not be called; only times.setUp is then set
  std::vector<std::string> remarks;  ///< what a user should know about the result, one line each
  MethodTimes times;
  std::vector<GradientResult> gradients;  ///< field by field, the components of a vector one after the other
  std::string whyNotFinite;               ///< empty if all gradients are finite and the span can work

  /// Number of cells where a gradient is infinite or NaN, counted once for each gradient.
  std::int64_t NotFiniteCells() const;
};

/// The errors, or without exact gradient the gradient's own norms.
GradientErrors const& NormsOf(GradientResult const& one);

/// A field whose gradient is computed: a scalar, or a vector by its three components.
struct GradientField {
  std::string name;                  ///< of a field from a file; empty for a formula
  std::vector<TestField> component;  ///< 1 or 3

  bool IsVector() const { return component.size() == 3; }
};

/// What all methods have in common.
struct GradientCase {
  std::vector<GradientField> fields;
  std::vector<double> exactL2;  ///< of each component of each field; empty for fields without exact gradient

  /// The fields are the three formulas for a method of three fields: methods of one field take the first.
  bool onlyFirst = false;

  std::vector<char> isBoundaryCell;
  std::vector<double> weight;  ///< [1..NCell]
  int nSweeps = 3;
  RadialBasisSettings radialBasis;  ///< as in the file that the operator reads
  int nRepeat = 3;                  ///< timed calls after the first
  std::string logFile;              ///< receives what the operators print on this rank
};

/// One method on one mesh. It sets up its operator once, and applies it to the fields of one time after the other.
class MethodRun {
 public:
  /// Collective. Sets up the operator. Borrows everything; the settings of the case must stay as they are.
  MethodRun(Ranks const& ranks, reference_host::LoadedMesh& mesh, GradientMethod const& method,
            GradientCase const& theCase);
  MethodRun(MethodRun const&) = delete;
  MethodRun& operator=(MethodRun const&) = delete;

  /// Collective. Computes the gradients of all fields of the case and compares each with the exact gradient, or measures
  /// it if the exact one is not known. A method of three fields takes the components of a vector, or three scalars in
  /// the order given (the last one repeatedly, if there are not enough).
  ///
  /// The first time, the first call is made 1 + nRepeat times to time it; later there is one call.
  MethodResult Apply(GradientCase& theCase);

 private:
  Ranks const& ranks_;
  reference_host::LoadedMesh& mesh_;
  GradientMethod const& method_;
  COperatorGradient op_;
  std::string notRun_;
  std::optional<std::vector<std::string>> remarks_;  ///< of the first Apply
  double setUpSeconds_ = 0.0;
  bool isFirst_ = true;
};

/// Collective. A MethodRun for one case.
MethodResult RunMethod(Ranks const& ranks, reference_host::LoadedMesh& mesh, GradientMethod const& method,
                       GradientCase& theCase);

}  // namespace zyngrad
