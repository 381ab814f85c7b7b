#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/points/PointSet.h"
#include "cli/points/UsableCells.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {

/// The results of the operator at points, one entry per point.
struct PointValues {
  std::vector<double> value;              ///< U
  std::vector<double> gx, gy, gz;         ///< gradient, U/L
  std::vector<std::int64_t> members;      ///< cells in the stencil
  std::vector<std::int64_t> isRowFinite;  ///< 0 if one of the weights is infinite or NaN
};

/// Each time is that of the slowest rank; all ranks begin a call together.
struct PointTimes {
  double setUp = 0.0;       ///< seconds
  double first = 0.0;       ///< first application, seconds
  double later = 0.0;       ///< median of the applications after it, seconds
  double usPerPoint = 0.0;  ///< set-up of a rank, per point of its own
  double nsPerPoint = 0.0;  ///< a rank's median of the later applications, per point of its own
};

struct PointRun {
  PointValues values;  ///< of all ranks in the order of the points, on the first rank
  PointTimes times;
};

/// Collective. Sets up the operator on every rank for the rank's own points, with the settings beside the
/// partition's base file name, and applies it to the field. A rank without points does nothing.
/// @param[in] points   the same on every rank, as are `owners`
/// @param[in] field    [1..NCell], set in usable cells; only read, although the operator takes it without const
/// @param[in] logFile  receives what the operator prints on this rank
PointRun RunPoints(Ranks const& ranks, reference_host::LoadedMesh& mesh, UsableCells& usable,
                   PointSet const& points, std::vector<PointOwner> const& owners, std::vector<double>& field,
                   std::string const& logFile);

}  // namespace zyngrad
