#pragma once

#include <string>
#include <vector>

#include "cli/compare_ranks/CompareRanksMesh.h"
#include "cli/compare_ranks/CompareRanksRun.h"

namespace zyngrad {

/// How far a case may differ between numbers of parts.
struct RankLevel {
  std::string name;            ///< "round-off", "conditioning" or "error"
  std::vector<double> atItem;  ///< as the items of the result
};

/// With eps the spacing of doubles at 1, Phi the largest |phi|, G the largest slope, and for a cell of volume V with
/// faces of area S:
/// - Green-Gauss, n sweeps: 8 n eps Phi max(sum S / V), since each sum has terms of the size Phi S / V in another
///   order, and each sweep takes the differences of the one before along; at least 1e-12 G;
/// - least squares: 16 eps cond G, cond the condition number of the cell's moments; at least 1e-12 G;
/// - radial basis: eps cond Phi sum |w|, cond that of the cell's system and w its weights;
/// - faces and points: 10 e + eps cond Phi, with e the largest error of the reference's values and cond the worst
///   condition number in a sample: stencils beside a cut lack the cells that only touch it with a node, and what
///   stands first in a search depends on the numbering.
/// @param[in] results  the reference, in the order of question.cases
std::vector<RankLevel> LevelsOf(WholeMesh const& mesh, RankQuestion const& question,
                                std::vector<RankResult> const& results);

}  // namespace zyngrad
