#pragma once

#include <string>
#include <vector>

#include "cli/compare_ranks/RunOnParts.h"
#include "cli/compare_ranks/WholeMesh.h"

namespace zyngrad {

/// How much the results of a case may differ between numbers of parts.
struct RankLevel {
  std::string name;            ///< "round-off", "conditioning", "error" or "step"
  std::vector<double> atItem;  ///< for each item of the result
};

/// The levels, where eps is the spacing of doubles at 1, Phi the largest |phi|, G the largest slope, V the volume of
/// a cell and S the areas of its faces:
/// - Green-Gauss, n sweeps: 8 n eps Phi max(sum S / V), because each sum adds terms of the size Phi S / V in another
///   order, and each sweep inherits the differences of the previous one; at least 1e-12 G;
/// - least squares: 16 eps cond G, where cond is the condition number of the cell's moments; at least 1e-12 G;
/// - radial basis: eps cond Phi sum |w|, where cond is the condition number of the cell's system and w its weights;
/// - faces and points: 10 e + eps cond Phi, where e is the largest error of the reference's values and cond the worst
///   condition number in a sample: stencils beside a cut lack the cells that touch it only with a node, and the order
///   of the cells that a search finds depends on the numbering. For a field from a file, whose exact values are not
///   known, 10 e is replaced by the largest step: the difference of the value at a face from the mean of its two cells,
///   or at a point from its cell. It is far larger than an error on a mesh that resolves the field.
/// @param[in] results  the reference, in the order of question.cases
std::vector<RankLevel> LevelsOf(WholeMesh const& mesh, RankQuestion const& question,
                                std::vector<RankResult> const& results);

}  // namespace zyngrad
