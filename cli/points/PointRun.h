#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/points/PointSet.h"
#include "cli/points/UsableCells.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
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

/// The operator at points: set up once, for any number of fields. With the settings beside the partition's base file
/// name. A rank without points does nothing.
class PointOperator {
 public:
  /// Collective. Sets the operator up on every rank for the rank's own points.
  /// @param[in] points   the same on every rank, as are `owners`
  /// @param[in] logFile  receives what the operator prints on this rank
  PointOperator(Ranks const& ranks, reference_host::LoadedMesh& mesh, UsableCells& usable,
                PointSet const& points, std::vector<PointOwner> const& owners, std::string logFile);

  /// Collective. The values and gradients of all ranks in the order of the points, on the first rank. `members` and
  /// `isRowFinite` are empty: they are those of Stencils.
  /// @param[in] field  [1..NCell], set in usable cells; only read, although the operator takes it without const
  PointValues Apply(std::vector<double>& field);

  /// Collective. `members` and `isRowFinite` of all ranks in the order of the points, on the first rank.
  PointValues Stencils() const;

  /// Collective. Applies the operator several times.
  PointTimes TimeCalls(std::vector<double>& field);

 private:
  /// The points of this rank. Coordinates are [1..count]; the operator's report reads element 0.
  struct OwnPoints {
    std::vector<std::int64_t> number;  ///< among all points, from 0
    std::vector<double> x = {0.0}, y = {0.0}, z = {0.0};

    int count() const { return static_cast<int>(number.size()); }
  };

  static OwnPoints Select(PointSet const& points, std::vector<PointOwner> const& owners, int rank);
  PointValues Room() const;
  void Multiply(std::vector<double>& field, PointValues& values);

  Ranks const& ranks_;
  std::string logFile_;
  OwnPoints own_;
  CZynIBRBFInternalObject operator_;
  double setUpSeconds_ = 0.0;  ///< of this rank
};

struct PointRun {
  PointValues values;  ///< of all ranks in the order of the points, on the first rank
  PointTimes times;
};

/// Collective. A PointOperator for one field: its values, stencils and times.
PointRun RunPoints(Ranks const& ranks, reference_host::LoadedMesh& mesh, UsableCells& usable,
                   PointSet const& points, std::vector<PointOwner> const& owners, std::vector<double>& field,
                   std::string const& logFile);

}  // namespace zyngrad
