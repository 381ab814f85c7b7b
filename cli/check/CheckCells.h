#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/check/CheckedSystem.h"
#include "cli/gradient/GradientMethods.h"
#include "cli/options/RadialBasisSettings.h"
#include "gradient/COperatorGradient.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {

/// What to check in the cells of a mesh.
struct CellCheckCase {
  std::vector<GradientMethod const*> methods;
  RadialBasisSettings radialBasis;
  std::string logFile;  ///< receives what the operators print on this rank

  bool HasType(int gradientType) const;
};

/// Collective. Checks the interior cells of this partition for the methods asked for. Linear in the cells.
/// @return [0..NInnerCells-1] the cells in their order
std::vector<CheckedSystem> CheckCells(Ranks const& ranks, reference_host::LoadedMesh& mesh,
                                      CellCheckCase const& theCase);

// The parts of CheckCells. Those without `ranks` are not collective.

/// Measures what does not depend on the method: number, place, volume, boundary and symmetry, skewness and
/// non-orthogonality. The skewness of a face between two centres at the same place is infinite.
std::vector<CheckedSystem> MeasureCells(reference_host::HostPartition& partition);

/// Records what the radial-basis operator derives for each cell.
void CheckCellStencils(reference_host::HostPartition& partition, RadialBasisSettings const& settings,
                       std::string const& logFile, std::vector<CheckedSystem>& cells);

/// Records the pivots of the least-squares elimination, with the operator's own moments and operations.
/// @pre `op` was initialised with the gradient type of least squares
void CheckPivots(COperatorGradient const& op, std::vector<CheckedSystem>& cells);

/// Collective. Sets up a method other than the radial-basis method, runs it on a linear field and records the
/// cells whose gradient is not finite. Least squares is not run if it would stop at a zero pivot.
void CheckGradients(Ranks const& ranks, reference_host::LoadedMesh& mesh, GradientMethod const& method,
                    std::vector<CheckedSystem>& cells);

}  // namespace zyngrad
