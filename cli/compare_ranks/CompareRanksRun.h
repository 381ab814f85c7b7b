#pragma once

#include <string>
#include <vector>

#include "cli/compare_ranks/CompareRanksMesh.h"
#include "cli/field/Expression.h"
#include "cli/study/StudyMethod.h"

namespace zyngrad {

struct RankQuestion {
  std::vector<StudyCase> cases;
  Expression field;
  int searchNumber = 20;  ///< of faces and points that search for cells
};

/// What one case gave on one number of parts: of gradients an item for each cell; of faces for each face of the
/// mesh; of points for each cell with a point in it, as in a study.
struct RankResult {
  std::string notRun;                       ///< why it could not be called; there are no items then
  std::vector<reference_host::Point> item;  ///< gradient, U/L, or value and twice 0, U
  std::vector<char> isThere;                ///< of faces: it is between two cells of one part
};

/// The results of all cases, in their order, on a mesh in `nParts` parts, each a thread of this process. What
/// the operators print goes nowhere. Throws UsageError when the field is not finite in a cell.
std::vector<RankResult> RunOnParts(WholeMesh const& mesh, int nParts, RankQuestion const& question,
                                   bool nonBlocking);

}  // namespace zyngrad
