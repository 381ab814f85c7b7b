#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/points/PointSet.h"
#include "cli/points/UsableCells.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {

/// What the operator gave at points, an entry a point.
struct PointValues {
  std::vector<double> value;              ///< U
  std::vector<double> gx, gy, gz;         ///< gradient, U/L
  std::vector<std::int64_t> members;      ///< cells in the stencil
  std::vector<std::int64_t> isRowFinite;  ///< 0: one of the weights is infinite or NaN
};

/// Of the slowest rank each; all calls begin together.
struct PointTimes {
  double setUp = 0.0;       ///< seconds
  double first = 0.0;       ///< first application, seconds
  double later = 0.0;       ///< median of the applications after it, seconds
  double usPerPoint = 0.0;  ///< set-up of a rank over its own points
  double nsPerPoint = 0.0;  ///< a rank's median of the later applications over its own points
};

struct PointRun {
  PointValues values;  ///< of all ranks in the points' order, on the first rank
  PointTimes times;
};

/// Collective. Sets the operator up on every rank for its own points, with the settings of the partition's
/// base file name, and applies it to the field. A rank without points does nothing.
/// @param[in] points   the same on every rank, as are `owners`
/// @param[in] field    [1..NCell], given in usable cells; the operators take it without const and only read it
/// @param[in] logFile  takes what the operator prints on this rank
PointRun RunPoints(Ranks const& ranks, reference_host::LoadedMesh& mesh, UsableCells& usable,
                   PointSet const& points, std::vector<PointOwner> const& owners, std::vector<double>& field,
                   std::string const& logFile);

}  // namespace zyngrad
