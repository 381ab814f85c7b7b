#pragma once

#include <cstdint>

namespace zyngrad {

/// What the check measured of one cell, face or point and of the system behind it.
struct CheckedSystem {
  std::int64_t number = 0;  ///< 1-based: of the cell in the mesh, of the point; of a face its lower cell
  std::int64_t other = 0;   ///< of a face its other cell, 0 at the boundary; else 0
  double at[3] = {0.0, 0.0, 0.0};  ///< L
  std::uint32_t findings = 0;      ///< sum of Finding
  int members = 0;                 ///< of the stencil, the cell itself included

  /// Estimate in the 1-norm: infinity for a singular system, NaN for one that is not finite, 0 where there is
  /// none.
  double condition = 0.0;
  double rowSum = 0.0;  ///< largest distance of the sum of a row of weights from its ideal; see RowSum

  // Of cells
  double volume = 0.0;            ///< L^3
  double skewness = 0.0;          ///< largest of the cell's faces to other cells
  double nonOrthogonality = 0.0;  ///< likewise, degrees
};

}  // namespace zyngrad
