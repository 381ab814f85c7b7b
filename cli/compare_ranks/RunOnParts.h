#pragma once

#include <string>
#include <vector>

#include "cli/compare_ranks/RankField.h"
#include "cli/compare_ranks/WholeMesh.h"
#include "cli/study/StudyMethod.h"

namespace zyngrad {

/// What a comparison is asked to run.
struct RankQuestion {
  std::vector<StudyCase> cases;
  RankField field;
  int searchNumber = 20;  ///< for faces and points that search for cells
};

/// What one case gave on one number of parts. There is an item for each cell (gradients), for each face of the
/// mesh (faces), or for each cell with a point in it, as in a study (points).
struct RankResult {
  std::string notRun;                       ///< why it could not be called; there are then no items
  std::vector<reference_host::Point> item;  ///< gradient, U/L; or value, U, followed by two zeros
  std::vector<char> isThere;                ///< for faces: whether the face is between two cells of one part
};

/// The results of all cases, in their order, on a mesh in `nParts` parts, each a thread of this process. Discards
/// what the operators print. Throws UsageError if the field is not finite in a cell.
std::vector<RankResult> RunOnParts(WholeMesh const& mesh, int nParts, RankQuestion const& question,
                                   bool nonBlocking);

}  // namespace zyngrad
