#pragma once

#include <cstdint>

namespace zyngrad {

/// What the check measured at one cell, face or point and in its system.
struct CheckedSystem {
  std::int64_t number =
      0;  ///< 1-based number of the cell in the mesh or of the point; for a face, its lower cell
  std::int64_t other = 0;          ///< for a face, its other cell, 0 at the boundary; otherwise 0
  double at[3] = {0.0, 0.0, 0.0};  ///< L
  std::uint32_t findings = 0;      ///< sum of Finding
  int members = 0;                 ///< of the stencil, the cell itself included

  /// Estimate in the 1-norm: infinity for a singular system, NaN for a system that is not finite, 0 if there is
  /// no system.
  double condition = 0.0;
  double rowSum =
      0.0;  ///< largest distance of the sum of a row of weights from what it should be; see RowSum

  // For cells
  double volume = 0.0;            ///< L^3
  double skewness = 0.0;          ///< largest among the cell's faces to other cells
  double nonOrthogonality = 0.0;  ///< largest among the same faces, degrees
};

}  // namespace zyngrad
