#pragma once

#include <cstdint>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/field/TestField.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// A gradient on one partition, [1..NCell] each, U/L.
struct GradientArrays {
  std::vector<double> x, y, z;
};

/// Errors over a set of cells of all ranks, where V is the volume of a cell and e the Euclidean length of the
/// computed minus the exact gradient. All are NaN if the set is empty.
struct ErrorNorms {
  std::int64_t nCells = 0;
  double volume = 0.0;      ///< L^3
  double l1 = 0.0;          ///< sum of V e / sum of V, U/L
  double l2 = 0.0;          ///< square root of (sum of V e^2 / sum of V), U/L
  double relativeL2 = 0.0;  ///< l2 / L2 of the exact gradient over the whole mesh; NaN if that is 0
  double max = 0.0;         ///< largest e among the finite ones, U/L
  std::int64_t maxCell =
      0;  ///< 1-based number in the mesh file of the cell with `max`, the lowest among equals; 0 if none
  double maxPlace[3] = {0.0, 0.0, 0.0};  ///< centre of that cell, L
  std::int64_t nNotFinite = 0;  ///< cells whose gradient is infinite or NaN; l1 and l2 are then not finite
};

/// Errors of interior cells and of boundary cells, which have a face in inlet, outlet, wall or symmetry.
struct GradientErrors {
  ErrorNorms interior;
  ErrorNorms boundary;
};

/// [1..NInnerCells] whether the cell has a boundary face.
std::vector<char> BoundaryCells(CZYN3DFiniteVolumeMesh const& mesh);

/// [1..NInnerCells] Euclidean length of computed minus exact gradient, U/L.
std::vector<double> CellErrors(TestField const& field, GradientArrays const& gradient);

/// Collective. Square root of (sum of V |g|^2 / sum of V) of the exact gradient over all cells.
double ExactGradientL2(Ranks const& ranks, CZYN3DFiniteVolumeMesh const& mesh, TestField const& field);

/// Collective. The sums run in cell order on each rank and then in rank order, which gives the same bits in every
/// run on the same number of ranks.
/// @param[in] cellError      [1..NInnerCells] from CellErrors
/// @param[in] isBoundaryCell [1..NInnerCells] from BoundaryCells
GradientErrors SummariseErrors(Ranks const& ranks, reference_host::HostPartition& partition,
                               std::vector<double> const& cellError, std::vector<char> const& isBoundaryCell,
                               double exactL2);

}  // namespace zyngrad
