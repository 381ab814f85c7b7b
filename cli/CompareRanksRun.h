#pragma once

#include <string>
#include <vector>

#include "cli/CompareRanksMesh.h"
#include "cli/Expression.h"
#include "cli/GradientMethods.h"
#include "cli/RadialBasisSettings.h"

namespace zyngrad {

struct RankQuestion {
  std::vector<const GradientMethod*> methods;  ///< of one field each
  Expression field;
  int nSweeps = 3;
  RadialBasisSettings radialBasis;
};

/// What one method gave on one number of parts.
struct RankResult {
  std::string notRun;                           ///< why it could not be called; the gradient is then empty
  std::vector<reference_host::Point> gradient;  ///< [0..nCells-1] by the cell's number in the mesh, U/L
};

/// The results of all methods, in their order, on a mesh in `nParts` parts, each a thread of this process. What
/// the operators print goes nowhere. Throws UsageError when the field is not finite in a cell.
std::vector<RankResult> RunOnParts(const WholeMesh& mesh, int nParts, const RankQuestion& question,
                                   bool nonBlocking);

}  // namespace zyngrad
