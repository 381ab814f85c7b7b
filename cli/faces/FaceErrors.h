#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/faces/FaceRun.h"
#include "cli/faces/TargetedFaces.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// One face among those of all ranks.
struct FacePlace {
  std::int64_t face = 0;  ///< 1-based within its group on its rank; 0 if there is none
  std::int64_t rank = 0;
  std::int64_t cell = 0, other = 0;  ///< 1-based numbers in the mesh of its two cells; 0: none, at a boundary
  double at[3] = {0.0, 0.0, 0.0};    ///< target of the face, L
};

/// Errors over the faces of all ranks, where A is the area of a face and e the interpolated minus the exact
/// value. All are NaN if there is no face.
struct FaceErrors {
  std::int64_t nFaces = 0;
  double area = 0.0;            ///< L^2
  double l1 = 0.0;              ///< sum of A |e| / sum of A, U
  double l2 = 0.0;              ///< square root of (sum of A e^2 / sum of A), U
  double relativeL2 = 0.0;      ///< l2 / L2 of the exact values; NaN if that is 0
  double max = 0.0;             ///< largest |e| among the finite ones, U
  FacePlace maxPlace;           ///< among equal ones, the one between the lowest cells
  std::int64_t nNotFinite = 0;  ///< values that are infinite or NaN; l1 and l2 are then not finite
};

/// The largest distance from 1 that the sum of a face's weights may have without a warning.
constexpr double kRowSumTolerance = 1e-3;

/// Whether the weights of the faces are plausible: a constant field of 1 gives their sum.
struct FaceRowCheck {
  std::int64_t nOff = 0;  ///< rows with finite weights whose sum is not within kRowSumTolerance of 1
  double worstSum = 1.0;  ///< the sum farthest from 1
  FacePlace worst;
  std::int64_t nNotFinite = 0;  ///< rows with a weight that is infinite or NaN
  FacePlace firstNotFinite;     ///< the one between the lowest cells
};

/// Collective. The sums run in face order on each rank and then in rank order.
/// @param[in] exact  [1..count] from ExactFaceValues
FaceErrors SummariseFaceErrors(Ranks const& ranks, reference_host::HostPartition const& partition,
                               TargetedFaces const& faces, std::vector<double> const& value,
                               std::vector<double> const& exact);

/// Collective. The finite values that lie lowest and highest; NaN if there are none.
/// @param[in] value  [1..count] of this rank
std::array<double, 2> RangeOfValues(Ranks const& ranks, std::vector<double> const& value);

/// Collective.
FaceRowCheck CheckFaceRows(Ranks const& ranks, reference_host::HostPartition const& partition,
                           TargetedFaces const& faces, std::vector<double> const& rowSum);

}  // namespace zyngrad
